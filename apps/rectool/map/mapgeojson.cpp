// Writing lines of bearing and fixes of a span to a file or standard output.
#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "features.h"
#include "geo/geodesic.h"
#include "geo/shapes.h"
#include "geofixes.h"
#include "making/savedfile.h"
#include "mapoptions.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/linesofbearing.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using Geo::NoFix;
using Geo::Position;

namespace {

struct Reason {
    const char* word;
    const char* sentence;
};

/// As NoFix declares them.
constexpr std::array<Reason, 7> Reasons{
    {{"one-position", "All bearings were taken at one position."},
     {"no-crossing", "No two lines cross in front of their positions, within 1000 km."},
     {"too-far", "The most likely position is more than 1000 km away."},
     {"undetermined", "The lines cross at too flat an angle: the distance is as uncertain as it is long."},
     {"at-position", "The lines meet where one of them begins, and there a bearing says nothing."},
     {"contradictory", "Too many bearings point away from where the others meet."},
     {"not-converged", "The search for the most likely position came to no end."}}};

/// Puts the features together. Fixes are numbered from 1.
class Collection {
public:
    Collection(const TakenBearings& taken, const std::vector<BearingGroup>& groups, double lengthM)
        : m_bearings(taken.bearings), m_groups(groups), m_fixOf(taken.bearings.size(), nullptr)
    {
        for (const BearingGroup& group : groups) {
            if (group.fix() == nullptr) {
                continue;
            }
            m_numbers[&group] = m_numbers.size() + 1;
            for (const std::size_t bearing : group.bearings) {
                m_fixOf[bearing] = &group;
            }
        }
        chooseLengths(lengthM);
    }
    void forEachFeature(const std::function<void(const Json&)>& visit) const
    {
        visitStations(visit);
        for (std::size_t i = 0; i < m_bearings.size(); ++i) {
            visit(bearing(i));
        }
        for (const BearingGroup& group : m_groups) {
            if (group.fix() != nullptr) {
                visit(fix(group, m_numbers.at(&group)));
                visit(uncertainty(group, m_numbers.at(&group)));
            }
        }
    }
    [[nodiscard]] std::size_t fixes() const { return m_numbers.size(); }
    [[nodiscard]] Json unfixed() const
    {
        Json list = Json::array();
        for (const BearingGroup& group : m_groups) {
            if (group.fix() != nullptr) {
                continue;
            }
            const Reason& reason = Reasons.at(static_cast<std::size_t>(std::get<NoFix>(group.result)));
            Json entry = about(group);
            entry["bearings"] = group.bearings.size();
            entry["reason"] = reason.word;
            entry["note"] = reason.sentence;
            list.push_back(std::move(entry));
        }
        return list;
    }

private:
    /// A line reaches beyond its fix; one without a fix is as long as most others.
    /// @param givenM 0: chosen
    void chooseLengths(double givenM)
    {
        constexpr double Beyond = 1.2;
        constexpr double WithoutFixesM = 10'000;
        m_lengthM.assign(m_bearings.size(), givenM);
        if (givenM > 0) {
            return;
        }
        std::vector<double> chosen;
        for (std::size_t i = 0; i < m_bearings.size(); ++i) {
            if (m_fixOf[i] != nullptr) {
                m_lengthM[i] = Beyond * Geo::distanceM(m_bearings[i].line.from, m_fixOf[i]->fix()->position);
                chosen.push_back(m_lengthM[i]);
            }
        }
        const auto middle = chosen.begin() + static_cast<std::ptrdiff_t>(chosen.size() / 2);
        std::nth_element(chosen.begin(), middle, chosen.end());
        const double usualM = chosen.empty() ? WithoutFixesM : *middle;
        for (std::size_t i = 0; i < m_bearings.size(); ++i) {
            m_lengthM[i] = m_fixOf[i] != nullptr ? m_lengthM[i] : usualM;
        }
    }
    void visitStations(const std::function<void(const Json&)>& visit) const
    {
        struct Use {
            std::size_t first;
            std::size_t last;
        };
        std::vector<Position> positions;  // in the order of their first use
        std::map<std::pair<double, double>, std::vector<Use>> uses;
        for (std::size_t i = 0; i < m_bearings.size(); ++i) {
            const Position& from = m_bearings[i].line.from;
            std::vector<Use>& here = uses[{from.latitudeDeg, from.longitudeDeg}];
            if (here.empty()) {
                positions.push_back(from);
            }
            const bool stays = i > 0 && m_bearings[i - 1].line.from == from;
            if (!stays) {
                here.push_back({i, i});
            }
            here.back().last = i;
        }
        for (const Position& position : positions) {
            Json times = Json::array();
            std::size_t count = 0;
            for (const Use& use : uses[{position.latitudeDeg, position.longitudeDeg}]) {
                times.push_back({{"fromMs", m_bearings[use.first].timeMs},
                                 {"toMs", m_bearings[use.last].timeMs},
                                 {"bearings", use.last - use.first + 1}});
                count += use.last - use.first + 1;
            }
            visit(feature(point(position), {{"type", "station"}, {"bearings", count}, {"used", std::move(times)}}));
        }
    }
    [[nodiscard]] Json bearing(std::size_t i) const
    {
        const TakenBearing& taken = m_bearings[i];
        const values::Bearing& measured = taken.bearing;
        Json properties = {{"type", "bearing"},
                           {"channel", taken.channel},
                           {"frequencyHz", taken.frequencyHz},
                           {"azimuthDeg", direction(taken.line.azimuthDeg)},
                           {"azimuthReference", taken.headingDeg ? "true" : "antenna"},
                           {"headingDeg", taken.headingDeg ? Json(*taken.headingDeg) : Json()},
                           {"elevationDeg", measured.elevationDeg},
                           {"levelDb", measured.levelDb},
                           {"quality", measured.quality},
                           {"timeMs", taken.timeMs},
                           {"time", clockTime(taken.measuredUs)},
                           {"fix", m_fixOf[i] != nullptr ? Json(m_numbers.at(m_fixOf[i])) : Json()}};
        return feature(lineString(Geo::linePaths(taken.line, m_lengthM[i])), std::move(properties));
    }
    /// What a group is of, and when.
    [[nodiscard]] Json about(const BearingGroup& group) const
    {
        const TakenBearing& first = m_bearings[group.bearings.front()];
        const TakenBearing& last = m_bearings[group.bearings.back()];
        return {{"channel", last.channel},
                {"frequencyHz", last.frequencyHz},
                {"firstTime", clockTime(first.measuredUs)},
                {"lastTime", clockTime(last.measuredUs)}};
    }
    [[nodiscard]] Json fix(const BearingGroup& group, std::size_t number) const
    {
        const Geo::Fix& fix = *group.fix();
        Json properties = {{"type", "fix"}, {"fix", number}};
        properties.update(about(group));
        properties["bearings"] = fix.bearings;
        properties["positions"] = fix.positions;
        properties["outliers"] = fix.outliers;
        properties.update(uncertaintyOf(fix));
        properties["rmsErrorDeg"] = thousandths(fix.rmsErrorDeg);
        properties["chi2PerDof"] = fix.chi2PerDof ? Json(thousandths(*fix.chi2PerDof)) : Json();
        return feature(point(fix.position), std::move(properties));
    }
    [[nodiscard]] Json uncertainty(const BearingGroup& group, std::size_t number) const
    {
        const Geo::Fix& fix = *group.fix();
        Json properties = {{"type", "uncertainty"}, {"fix", number}};
        properties.update(about(group));
        properties.update(uncertaintyOf(fix));
        return feature(polygon(Geo::ellipseRings(fix.position, fix.ellipse)), std::move(properties));
    }
    const std::vector<TakenBearing>& m_bearings;
    const std::vector<BearingGroup>& m_groups;
    std::vector<const BearingGroup*> m_fixOf;              // of each bearing, null without
    std::map<const BearingGroup*, std::size_t> m_numbers;  // of the groups with a fix
    std::vector<double> m_lengthM;                         // of each bearing's line
};

Json about(const MapOptions& options, const Span& span)
{
    return {{"file", shownName(options.files.front())},
            {"fromMs", options.from.empty() ? Json() : Json(span.from)},
            {"toMs", options.to.empty() ? Json() : Json(span.to)}};
}

void complainOfBearings(const std::string& file, const TakenBearings& taken)
{
    if (taken.withoutPosition > 0) {
        complain(file, grouped(taken.withoutPosition) + " of " +
                           grouped(taken.bearings.size() + taken.withoutPosition) +
                           " bearings are left out: where they were taken is not recorded.");
    }
    complain(file, taken.findings);
}

}  // namespace

ExitCode mapGeoJson(const MapOptions& options, const Inspection::Summary& summary, const Span& span)
{
    constexpr double UsPerSecond = 1e6;
    constexpr double MPerKm = 1000;
    if (!options.output.empty() && !mayReplace(options.output)) {
        return ExitCode::Usage;
    }
    const TakenBearings taken = takeBearings(options.files.front(), summary, span);
    Geo::FixSettings fixes;
    fixes.sigmaDeg = options.sigmaDeg;
    const auto windowUs = static_cast<unsigned long long>(options.windowSeconds * UsPerSecond);
    const std::vector<BearingGroup> groups = findFixes(taken.bearings, fixes, windowUs);
    const Collection collection(taken, groups, options.lengthKm * MPerKm);
    Json head = about(options, span);
    head["sigmaDeg"] = options.sigmaDeg;
    head["windowSeconds"] = static_cast<double>(windowUs) / UsPerSecond;
    head["bearings"] = taken.bearings.size() + taken.withoutPosition;
    head["lines"] = taken.bearings.size();
    head["withoutPosition"] = taken.withoutPosition;
    head["fixes"] = collection.fixes();
    head["unfixed"] = collection.unfixed();
    // One feature a line, piece by piece: there may be millions of bearings.
    const auto produce = [&](const TextSink& write) {
        FeatureWriter features(head, write);
        collection.forEachFeature([&](const Json& feature) { features.add(feature); });
        features.end();
    };
    if (const ExitCode saved = saveText(options.output, produce); saved != ExitCode::Fine) {
        return saved;
    }
    complainOfBearings(options.files.front(), taken);
    return finish(withPassedOver(options.files.front(), DirectionFindingKeyword, "bearings", taken.passedOver,
                                 soundness(taken.findings)));
}

}  // namespace RecTool
