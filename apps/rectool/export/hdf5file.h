// An HDF5 file as programs of science expect it: groups with columns that grow along a labelled axis of time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include <hdf5.h>

namespace RecTool {

/// Closes what it holds: a file, a group, a dataset.
class Hdf5Handle {
public:
    using Close = herr_t (*)(hid_t);

    Hdf5Handle() = default;
    Hdf5Handle(hid_t id, Close closer) : m_id(id), m_close(closer) {}
    Hdf5Handle(Hdf5Handle&& other) noexcept : m_id(std::exchange(other.m_id, H5I_INVALID_HID)), m_close(other.m_close)
    {
    }
    Hdf5Handle& operator=(Hdf5Handle&& other) noexcept
    {
        std::swap(m_id, other.m_id);
        std::swap(m_close, other.m_close);
        return *this;
    }
    Hdf5Handle(const Hdf5Handle&) = delete;
    Hdf5Handle& operator=(const Hdf5Handle&) = delete;
    ~Hdf5Handle()
    {
        if (m_id >= 0) {
            m_close(m_id);
        }
    }

    [[nodiscard]] hid_t id() const { return m_id; }
    /// Closes now. @return below 0 when what was not written yet cannot be
    herr_t close() { return m_id < 0 ? 0 : m_close(std::exchange(m_id, H5I_INVALID_HID)); }

private:
    hid_t m_id = H5I_INVALID_HID;
    Close m_close = nullptr;
};

/// Keeps the reason of the first call that failed.
class Hdf5Problem {
public:
    /// Takes what a call answered. @return the same
    template <typename Answer>
    Answer check(Answer answer)
    {
        if (answer < 0) {
            note();
        }
        return answer;
    }
    /// Empty while nothing went wrong.
    [[nodiscard]] const std::string& text() const { return m_text; }

private:
    void note();

    std::string m_text;
};

/// What every part of the file needs.
struct Hdf5Setting {
    Hdf5Problem problem;
    unsigned int deflate = 0;
    bool hasClock = true;  ///< times are since 1970, otherwise since the recording's start
};

class Hdf5Group {
public:
    /// Makes the file. Nothing is told by the library itself from then on.
    Hdf5Group(Hdf5Setting& setting, const std::string& file);
    /// Makes a group, and those that it lies in, or opens it. @param path without "/" at its beginning
    Hdf5Group(const Hdf5Group& root, const std::string& path);

    [[nodiscard]] Hdf5Setting& setting() const { return *m_setting; }
    [[nodiscard]] hid_t id() const { return m_handle.id(); }
    void describe(const char* name, const std::string& text);
    void describe(const char* name, std::int64_t number);
    /// Ends what is written to a file.
    void close() { m_setting->problem.check(m_handle.close()); }

private:
    Hdf5Setting* m_setting;
    Hdf5Handle m_handle;
};

enum class Hdf5Kind : std::uint8_t { Float, Double, Int64, Text };

/// A dataset that grows row by row, or what it was when it was closed before.
class Hdf5Column {
public:
    /// @param width of a row, 0 for a column of single values
    /// @param rows of a chunk
    Hdf5Column(const Hdf5Group& group, const char* name, Hdf5Kind kind, std::size_t width, std::size_t rows);

    /// @param cells of so many rows, of the kind's type; texts are pointers
    void append(const void* cells, std::size_t rows);
    void describe(const char* name, const std::string& text);
    /// Whether it is not one that was opened again.
    [[nodiscard]] bool isNew() const { return m_isNew; }
    /// Makes it the axis that others hang on.
    void makeScale(const char* name);
    /// Labels an axis of it. @param scale that it goes along
    void attach(const Hdf5Column& scale, unsigned int axis, const char* name);
    [[nodiscard]] std::size_t rowsOfChunk() const { return m_rowsOfChunk; }

private:
    [[nodiscard]] Hdf5Handle create(const Hdf5Group& group, const char* name, std::size_t rows);

    Hdf5Setting* m_setting;
    Hdf5Kind m_kind;
    hsize_t m_width;
    bool m_isNew;
    std::size_t m_rowsOfChunk;
    Hdf5Handle m_handle;
    hsize_t m_rows = 0;
};

/// The column "time" of a group, described so that readers make dates of it.
[[nodiscard]] Hdf5Column makeHdf5Times(const Hdf5Group& group);

}  // namespace RecTool
