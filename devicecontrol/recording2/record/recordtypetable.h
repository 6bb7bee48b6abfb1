// The record type table: the 48 keywords that a recorder knows, their value paths and their type ids.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>

#include <QString>

#include <values/valuebase.h>

namespace Recording2 {

/// Type ids that the recorder treats specially. They are stored in recordings.
enum TypeId : std::int32_t {
    UnknownType = 0,
    RfSpectrum = 1,
    IfSpectrum = 2,
    DrvCommands = 3,
    StartFreq = 11,
    StopFreq = 12,
    StartLevel = 14,
    StopLevel = 15,
    RfYLimit = 16,
    DfSpectrum = 20,
    IfSpan = 32,
    Frequency = 46,
    DfSpectrumSample = 48,
};

struct RecordType {
    const char* keyword;
    const char* defaultPath;  ///< below the recorder's value path, unless it begins with "/"
    std::int32_t id;
};

/// The built-in rows, in their authors' order.
extern const std::array<RecordType, 48> RecordTypeTable;

/// One keyword of a recorder: where its value is, and the value while it is observed.
class CValueTable {
public:
    explicit CValueTable(QString valuePath) : m_valuePath(std::move(valuePath)) {}
    [[nodiscard]] QString GetValuePath() const { return m_valuePath; }

    values::ValueBase* observed = nullptr;  ///< not owned; null while nothing is observed
    bool switchedOn = false;                ///< its command recording, by this entry: only then it is switched off
    bool joined = false;                    ///< somebody else had it on: the next change is to be recorded whole

private:
    QString m_valuePath;
};

/// Keyword to its entry, in the order of the keywords. Owns the entries.
class CValueTableMap {
public:
    using Map = std::map<QString, std::unique_ptr<CValueTable>>;

    CValueTableMap() = default;
    CValueTableMap(const CValueTableMap&) = delete;
    CValueTableMap& operator=(const CValueTableMap&) = delete;
    virtual ~CValueTableMap() = default;

    void Clear() { m_entries.clear(); }
    [[nodiscard]] bool IsEmpty() const { return m_entries.empty(); }
    void Set(const QString& keyword, const QString& valuePath);
    [[nodiscard]] CValueTable* Find(const QString& keyword) const;  ///< null when there is none
    /// Moves an entry to another map; one of the same keyword there is replaced.
    void MoveTo(CValueTableMap& other, const QString& keyword);
    [[nodiscard]] Map::const_iterator begin() const { return m_entries.begin(); }
    [[nodiscard]] Map::const_iterator end() const { return m_entries.end(); }

private:
    Map m_entries;
};

}  // namespace Recording2
