// What of an HDF5 file is open, and the first thing that went wrong with it.
#pragma once

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

}  // namespace RecTool
