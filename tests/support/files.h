// Files of tests that are written and read whole.
#pragma once

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

}  // namespace TestSupport
