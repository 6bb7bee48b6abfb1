// The values that a recorder records: where its keywords find them, and which of them it observes.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <QString>

#include <values/maps.h>
#include <values/valuebase.h>
#include <vkbase/observer.h>

#include "recordtypetable.h"

namespace Recording2 {

/// One keyword of a recorder: where its value is, and the value while it is observed.
struct CValueTable {
    QString valuePath;
    values::ValueBase* observed = nullptr;  ///< not owned; null while nothing is observed
    bool registered = false;                ///< this entry made the recorder its observer
    bool switchedOn = false;                ///< its command recording, by this entry: only then it is switched off
    bool joined = false;                    ///< somebody else had it on: the next change is to be recorded whole
};
/// Keyword to its entry, in the order of the keywords.
using CValueTableMap = std::map<QString, CValueTable>;

/// A map whose own time stamp is the time of its records: bearings of a direction finder, levels of a spectrum. Null
/// for every other value.
[[nodiscard]] const values::MappingBase* timedMap(const values::ValueBase* value);
/// These two are told by the header of a recording, not by records.
[[nodiscard]] bool isHeaderText(const QString& keyword);

class ObservedValues {
public:
    /// An observed value with what capturing a change of it needs: found without a search through the keywords.
    struct Observed {
        values::ValueBase* value;
        std::int32_t typeId;
        const values::MappingBase* timedMap;  // the value, if it is of a class whose own time counts
        bool joined;                          // a change alone would lack what it is a change of
    };

    /// @param root path before relative ones; both must outlive the object
    ObservedValues(IObserver& observer, const QString& root);

    [[nodiscard]] CValueTableMap& keywords() { return m_keywords; }
    [[nodiscard]] const CValueTableMap& keywords() const { return m_keywords; }
    /// Forgets the keywords, and ends observing their values.
    void clear();
    [[nodiscard]] std::int32_t typeIdOf(const QString& keyword) const;
    [[nodiscard]] QString keywordOf(std::int32_t typeId) const;
    /// The absolute path of a keyword's value. @param fallback for a keyword that is not there
    [[nodiscard]] QString pathOf(const QString& keyword, const QString& fallback = QString()) const;
    /// The value that stands there; null when there is none.
    [[nodiscard]] values::ValueBase* valueOf(const QString& keyword, const QString& fallback = QString()) const;

    /// The observed value, null when a subject is none.
    [[nodiscard]] const Observed* find(const void* subject) const;
    /// The text of a change of it. @param change a copy: the list of the observed changes
    [[nodiscard]] const std::string& textOf(const Observed& change);
    void observe(CValueTable& entry, values::ValueBase& value);
    /// A value was removed. @return whether it was watched; one that confirms is forgotten
    bool forget(const void* subject, TChangeCode code);
    /// Ends observing all. What an entry throws is traced. @param goOn with the entries after it
    void stopAll(bool goOn);
    /// A keyword is recorded no more, or again.
    void drop(const QString& keyword);
    /// @param starting the states of all values follow
    void take(const QString& keyword, bool starting);

private:
    friend class RecordingTestPeer;

    void stopObserving(CValueTable& entry);
    void letGo(CValueTable& entry);
    void refresh();

    IObserver& m_observer;
    const QString& m_root;
    std::map<QString, std::int32_t> m_typeIds;
    CValueTableMap m_keywords;
    CValueTableMap m_inactiveKeywords;
    std::vector<Observed> m_observed;  // in the order of the keyword map
};

}  // namespace Recording2
