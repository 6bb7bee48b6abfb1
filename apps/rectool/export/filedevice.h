// A new file as Qt's writers want it.
#pragma once

#include <cstddef>
#include <string_view>

#include <QIODevice>

#include "making/newfile.h"

namespace RecTool {

/// Takes everything; what went wrong the file tells at its end.
class FileDevice final : public QIODevice {
public:
    explicit FileDevice(NewFile& file) : m_file(file) { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }
    [[nodiscard]] bool isSequential() const override { return true; }

protected:
    qint64 readData(char* /*bytes*/, qint64 /*size*/) override { return -1; }
    qint64 writeData(const char* bytes, qint64 size) override
    {
        m_file.write({bytes, static_cast<std::size_t>(size)});
        return size;
    }

private:
    NewFile& m_file;
};

}  // namespace RecTool
