// Files of tests that are written and read whole.
#pragma once

#include <filesystem>

#include <QByteArray>

#include "support/testing.h"

namespace TestSupport {

inline void writeBytes(const QString& name, const QByteArray& bytes)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    EXPECT_EQ(file.write(bytes), bytes.size());
}

[[nodiscard]] inline QByteArray readBytes(const QString& name)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return file.readAll();
}

/// The same for paths of the standard library; a file that cannot be read is an empty one.
inline void writeBytes(const std::filesystem::path& name, const std::string& bytes)
{
    std::ofstream(name, std::ios::binary) << bytes;
}

[[nodiscard]] inline std::string bytesOf(const std::filesystem::path& name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace TestSupport
