// The keywords of a recorder, where their values are, and which are needed together.
#include "check/findings.h"

#include <algorithm>
#include <map>
#include <memory>

#include <recording2/record/recordtypetable.h>
#include <startup/cfgcenter.h>
#include <values/tree.h>

#include "check/probe.h"

namespace RecStation {

namespace {

using KeywordPaths = std::map<QString, QString>;

QString wholeKeywordPath(const Instance& instance, const QString& path)
{
    return path.startsWith('/') ? path : instance.valuePath + '/' + path;
}

// What the header tells, and no record; it is found also where a recorder's own table leaves it out.
bool isHeaderText(const QString& keyword)
{
    return keyword == QLatin1String("DEVICENAME") || keyword == QLatin1String("DEVICETYPE");
}

// The recorder's own, from its table, or the built-in ones.
KeywordPaths keywordPathsOf(const Instance& instance)
{
    KeywordPaths paths;
    constexpr auto View = CfgCenter::View::Instance;
    const std::unique_ptr<ICfg> values(CfgCenter::CreateCfg(instance.name, View, QStringLiteral("Values")));
    if (values != nullptr) {
        for (std::int32_t i = 0; !values->KeyName(i).isEmpty(); ++i) {
            const QString keyword = values->KeyName(i);
            paths[keyword] = wholeKeywordPath(instance, values->ReadString(keyword, QString()));
        }
    }
    for (const Recording2::RecordType& type : Recording2::RecordTypeTable) {
        const QString keyword = QString::fromLatin1(type.keyword);
        if (values == nullptr || isHeaderText(keyword)) {
            paths.emplace(keyword, wholeKeywordPath(instance, QString::fromLatin1(type.defaultPath)));
        }
    }
    return paths;
}

class Keywords {
public:
    explicit Keywords(const Instance& instance) : m_paths(keywordPathsOf(instance)) {}

    [[nodiscard]] const values::ValueBase* valueOf(const QString& keyword) const
    {
        const auto path = m_paths.find(keyword);
        return path == m_paths.end() ? nullptr : values::Tree::Instance()->Find(path->second);
    }
    [[nodiscard]] bool isKnown(const QString& keyword) const
    {
        const values::ValueBase* value = valueOf(keyword);
        return value != nullptr && !isUnknown(*value);
    }
    [[nodiscard]] QStringList missing(const QStringList& keywords) const
    {
        QStringList missing;
        for (const QString& keyword : keywords) {
            if (!isKnown(keyword)) {
                missing += keyword;
            }
        }
        return missing;
    }
    [[nodiscard]] const KeywordPaths& paths() const { return m_paths; }

private:
    KeywordPaths m_paths;
};

/// Keywords that say the same in two ways: those of one way must all be known.
struct Need {
    QStringList one;
    QStringList other;
    const char* why;
};

void addLack(FoundRecorder& found, const Keywords& keywords, const Need& need)
{
    const QStringList one = keywords.missing(need.one);
    const QStringList other = keywords.missing(need.other);
    if (!one.isEmpty() && (need.other.isEmpty() || !other.isEmpty())) {
        const bool otherIsNearer =
            !need.other.isEmpty() && other.size() < need.other.size() && other.size() < one.size();
        found.lacks.push_back({otherIsNearer ? other : one, QString::fromLatin1(need.why)});
    }
}

const Need NeedsDevice = {{"DEVICENAME"}, {}, "files and header are named after the device"};
const Need NeedsFrequencies = {{"STARTFREQ", "STOPFREQ"}, {"FREQUENCY", "IFSPAN"}, "the header tells the frequencies"};
const Need NeedsLevels = {{"STARTLEVEL", "STOPLEVEL"}, {"RFYLIMIT"}, "the header tells the scale of levels"};
const Need NeedsBearings = {{"DFSPECTRUM"}, {}, "there are no bearings without it"};
const Need NeedsPlace = {{"LOCATIONLATITUDE", "LOCATIONLONGITUDE"}, {}, "bearings have no place on a map without it"};
const Need NeedsHeading = {{"TRUEHEADING"}, {}, "bearings have no true direction on a map without it"};

// Of the spectra a recorder takes those of its kind only.
bool isOfOtherKind(const QString& keyword, bool directionFinding)
{
    const bool bearings = keyword == QLatin1String("DFSPECTRUM");
    const bool spectrum = keyword == QLatin1String("RFSPECTRUM") || keyword == QLatin1String("IFSPECTRUM");
    return directionFinding ? spectrum : bearings;
}

}  // namespace

void findKeywords(FoundRecorder& found, const Instance& instance, bool receives)
{
    const Keywords keywords(instance);
    for (const auto& [keyword, path] : keywords.paths()) {
        if (keywords.valueOf(keyword) != nullptr && !isOfOtherKind(keyword, instance.directionFinding) &&
            !isHeaderText(keyword) && keyword != QLatin1String("DFSPECTRUMSAMPLE")) {
            found.keywords += keyword;
        }
    }
    addLack(found, keywords, NeedsDevice);
    if (instance.directionFinding) {
        addLack(found, keywords, NeedsBearings);
        addLack(found, keywords, NeedsFrequencies);
        addLack(found, keywords, NeedsPlace);
        addLack(found, keywords, NeedsHeading);
    } else if (receives) {
        addLack(found, keywords, NeedsFrequencies);
        addLack(found, keywords, NeedsLevels);
    }
}

}  // namespace RecStation
