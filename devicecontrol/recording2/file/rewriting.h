// Changing a finished recording in place, so that at every moment what was before or what is to be can be read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <string>

#include <system/nativefile.h>
#include "../format/undo.h"

namespace Recording2 {

/// Bytes that are read in place of a file's own, and the size that the file has with them.
class Overlay {
public:
    explicit Overlay(std::int64_t size) : m_size(size) {}

    /// @param position not after the end
    void put(std::int64_t position, std::span<const char> bytes);
    [[nodiscard]] std::int64_t size() const { return m_size; }
    [[nodiscard]] std::size_t readAt(const System::NativeFile& file, std::int64_t offset, char* out,
                                     std::size_t size) const;
    /// By position; none touches the next.
    [[nodiscard]] const std::map<std::int64_t, std::string>& pieces() const { return m_pieces; }

private:
    std::map<std::int64_t, std::string> m_pieces;
    std::int64_t m_size;
};

/// What stood in a file before a change that is not finished: whoever made it is at it, or was interrupted.
/// @param file the file with that path, open
/// @param earlier null when there is no such change
/// @return an error when there is one, but the bytes cannot be read
System::Error findEarlierState(const std::filesystem::path& path, const System::NativeFile& file,
                               std::shared_ptr<const Overlay>& earlier);

/// One change of a file. It is kept in memory until it is stored, all of it or nothing.
class Rewriting {
public:
    /// Opens the file, waits until no other process changes it, and puts back what one that was interrupted left.
    System::Error begin(const std::filesystem::path& path);
    /// The file with the change.
    [[nodiscard]] const std::shared_ptr<Overlay>& state() const { return m_state; }
    /// Stores the change. After an error the file is as it was before, or is read so until somebody changes it again.
    System::Error store();

private:
    System::Error openAlone();
    System::Error putBack();
    System::Error collect(Format::Undo& undo) const;
    System::Error writeUndo(const Format::Undo& undo) const;
    System::Error apply();

    std::filesystem::path m_path;
    System::NativeFile m_file;  // locked
    std::shared_ptr<Overlay> m_state;
};

}  // namespace Recording2
