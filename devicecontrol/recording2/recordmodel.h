// The values that cross the library's interface and stand in recording files.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <recording2/export.h>
#include <recording2/timestamp.h>

namespace Recording2 {

/// The header of a recording: a plain value, at first with numbers of 0, empty texts and null times.
class RECORDING2_EXPORT CHeaderData {
public:
    CHeaderData() = default;
    CHeaderData(const CHeaderData& other) = default;  ///< the copy's time stamps are never null
    /// Time stamps are assigned as CTimeStamp does: an equal one leaves the target as it is (a null one stays null).
    const CHeaderData& operator=(const CHeaderData& other);  // NOLINT(misc-unconventional-assign-operator)
    ~CHeaderData() = default;

    [[nodiscard]] std::int16_t majorversion() const { return m_major; }
    [[nodiscard]] std::int16_t minorversion() const { return m_minor; }
    /// Major in the upper, minor in the lower 16 bits; a negative minor version covers the major one.
    [[nodiscard]] Long version() const;
    void set_version(std::int16_t major, std::int16_t minor);

    [[nodiscard]] float startFreq() const { return m_startFreq; }  ///< lowest recorded frequency, Hz
    void set_startFreq(float hz) { m_startFreq = hz; }
    [[nodiscard]] float stopFreq() const { return m_stopFreq; }  ///< highest recorded frequency, Hz
    void set_stopFreq(float hz) { m_stopFreq = hz; }
    [[nodiscard]] float stepWidth() const { return m_stepWidth; }  ///< Hz
    void set_stepWidth(float hz) { m_stepWidth = hz; }
    [[nodiscard]] Long minLevel() const { return m_minLevel; }  ///< in the unit of the level values
    void set_minLevel(Long level) { m_minLevel = level; }
    [[nodiscard]] Long maxLevel() const { return m_maxLevel; }
    void set_maxLevel(Long level) { m_maxLevel = level; }

    // Texts are 8-bit bytes (Latin-1 when the recorder fills them). The const char* setters stop at the first NUL, the
    // std::string ones do not; a file stores a header text only up to its first NUL.
    [[nodiscard]] const char* deviceType() const { return m_deviceType.c_str(); }
    [[nodiscard]] std::uint32_t deviceTypeLength() const;  ///< bytes
    void set_deviceType(std::string& text);
    void set_deviceType(const char* text);
    [[nodiscard]] const char* deviceName() const { return m_deviceName.c_str(); }
    [[nodiscard]] std::uint32_t deviceNameLength() const;  ///< bytes
    void set_deviceName(std::string& text);
    void set_deviceName(const char* text);
    [[nodiscard]] const char* getJobID() const { return m_jobId.c_str(); }
    [[nodiscard]] std::uint32_t JobIDLength() const;  ///< bytes
    void setJobID(const char* text);

    [[nodiscard]] CTimeStamp startTS() const { return m_start; }  ///< time of the first record
    void set_startTS(CTimeStamp time);
    [[nodiscard]] CTimeStamp stopTS() const { return m_stop; }  ///< time of the end of the recording
    void set_stopTS(CTimeStamp time);

    [[nodiscard]] bool isAutomaticRec() const { return m_automatic; }  ///< not started by an operator
    void setAutomaticRec(bool automatic) { m_automatic = automatic; }

private:
    std::int16_t m_major = 0;
    std::int16_t m_minor = 0;
    float m_startFreq = 0;
    float m_stopFreq = 0;
    float m_stepWidth = 0;
    Long m_minLevel = 0;
    Long m_maxLevel = 0;
    std::string m_deviceType;
    std::string m_deviceName;
    std::string m_jobId;
    CTimeStamp m_start;
    CTimeStamp m_stop;
    bool m_automatic = false;
};

/// One recorded change: which type of value, and the value's bytes.
class RECORDING2_EXPORT CVTCmdData {
public:
    CVTCmdData() = default;
    // Copied also where it could be moved, so that a record keeps its data whatever it is assigned to.
    CVTCmdData(const CVTCmdData&) = default;
    CVTCmdData& operator=(const CVTCmdData&) = default;
    ~CVTCmdData() = default;

    [[nodiscard]] std::int32_t cmd() const { return m_cmd; }  ///< type number of the recording's type table
    void set_cmd(std::int32_t code) { m_cmd = code; }

    [[nodiscard]] const char* str() const { return m_data.c_str(); }  ///< any bytes, a NUL after the last
    [[nodiscard]] const char* strData() const { return m_data.c_str(); }
    [[nodiscard]] std::uint32_t strDataLen() const;  ///< bytes
    /// The first len bytes of s's buffer, which must hold that many; the whole of s when len is below 1.
    void set_str(std::string& s, std::int32_t len);
    /// len bytes from p, NUL bytes included; up to the terminating NUL when len is below 1.
    void set_str(const char* p, std::int32_t len);

private:
    friend class RecordReader;  // reads what may be large straight into a record
    std::int32_t m_cmd = 0;
    std::string m_data;
};

/// One entry of the type table. Two entries never share a type number. Assigning one to itself changes nothing, also as
/// a move.
struct RECORDING2_EXPORT S_TYPES {
    S_TYPES() = default;
    S_TYPES(std::int32_t number, std::int32_t type, std::string word, std::string path)
        : typeNumber(number), valueType(type), keyword(std::move(word)), valuePath(std::move(path))
    {
    }
    S_TYPES(const S_TYPES&) = default;
    S_TYPES(S_TYPES&&) noexcept = default;
    S_TYPES& operator=(const S_TYPES&) = default;
    S_TYPES& operator=(S_TYPES&& other) noexcept
    {
        if (this != &other) {
            typeNumber = other.typeNumber;
            valueType = other.valueType;
            keyword = std::move(other.keyword);
            valuePath = std::move(other.valuePath);
        }
        return *this;
    }
    ~S_TYPES() = default;

    std::int32_t typeNumber = 0;  ///< command code of the records of this type
    std::int32_t valueType = 0;   ///< the value library's type code
    std::string keyword;          ///< Latin-1
    std::string valuePath;        ///< Latin-1
};

/// The type table, in order of insertion.
class RECORDING2_EXPORT CVTTypesData {  // NOLINT(cppcoreguidelines-virtual-class-destructor): see the destructor
public:
    CVTTypesData() = default;
    CVTTypesData(const CVTTypesData&) = default;
    CVTTypesData& operator=(const CVTTypesData&) = default;
    // Not virtual, as hosts know the class: do not delete one through a pointer to a base.
    ~CVTTypesData() = default;

    // Callers know the virtual operations by their slots: add_item, find_type with one argument, find_type with two
    // (tests/integration/slots). A compiler of that kind gives the overloads of one name slots in reverse order.

    /// Appends the entry unless its type number is taken: the first entry of a number stays.
    virtual void add_item(S_TYPES item);
#if defined(_MSC_VER)
    virtual bool find_type(Long typeNumber, S_TYPES& out);
#endif
    /// The entry of the number; without one an empty entry that cannot be told from a real one by its numbers.
    virtual S_TYPES find_type(Long typeNumber);
#if !defined(_MSC_VER)
    /// The same with an answer; out is untouched when there is none.
    virtual bool find_type(Long typeNumber, S_TYPES& out);
#endif

    std::vector<S_TYPES>& get_vector()
    {
        return m_types;
    }

private:
    std::vector<S_TYPES> m_types;
};

}  // namespace Recording2
