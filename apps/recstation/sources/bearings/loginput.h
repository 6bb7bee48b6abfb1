// The bytes of a log, which is read twice.
#pragma once

#include <memory>
#include <string>

#include "input/byteinput.h"

namespace RecStation {

/// A file is opened anew for every reading. The standard input and pipes can be read once only, so their bytes are kept
/// in memory, 256 MiB at most.
class LogInput {
public:
    /// @param file UTF-8; "-" is the standard input
    /// @throws std::runtime_error when it cannot be read, or cannot be kept
    explicit LogInput(const std::string& file);

    /// Bytes from the beginning on. May outlive this object.
    /// @throws std::runtime_error when the file cannot be opened
    [[nodiscard]] ByteInput open() const;
    [[nodiscard]] const std::string& name() const { return m_name; }  ///< for messages

    /// What was read of an input that can be read once only.
    struct Kept {
        std::string bytes;
        std::string damage;  ///< why there are no more, where what is packed is damaged
    };

private:
    std::string m_file;
    std::string m_name;
    std::shared_ptr<const Kept> m_kept;  // null: a file that is read where it stands
};

}  // namespace RecStation
