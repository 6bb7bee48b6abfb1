// Walking the records of a spectrum.
#include "sweeps.h"

#include "context.h"
#include "rectool/replay/measuredtime.h"
#include "rectool/replay/recordedvalues.h"

namespace RecView {

namespace Inspection = Recording2::Inspection;
using LevelMap = values::CellMap<float, values::levelHandler>;

namespace {

class SweepVisit {
public:
    SweepVisit(double fromMs, double toMs, const std::function<bool(const WalkedSweep&)>& visit)
        : m_from(fromMs), m_to(toMs), m_visit(visit)
    {
    }

    bool take(const RecordedFile& file, const Inspection::Record& record)
    {
        const auto* map = dynamic_cast<const LevelMap*>(m_values.apply(record));
        if (map == nullptr) {
            return true;
        }
        const double ms = sinceEpoch(file, RecTool::momentMs(record, file.startMs));
        if (ms > m_to) {
            return true;
        }
        WalkedSweep sweep{
            ms, record.timeMs, &file, map->GetChannelRange(), {map->GetCells().begin(), map->GetCells().end()}};
        if (ms < m_from) {
            m_before = std::move(sweep);
            m_hasBefore = true;
            return true;
        }
        return tellBefore() && m_visit(sweep);
    }
    bool tellBefore()
    {
        const bool tell = std::exchange(m_hasBefore, false);
        return !tell || m_visit(m_before);
    }
    void nextFile() { m_values = {}; }

private:
    double m_from;
    double m_to;
    const std::function<bool(const WalkedSweep&)>& m_visit;
    RecTool::RecordedValues m_values;
    WalkedSweep m_before;
    bool m_hasBefore = false;
};

}  // namespace

void visitSweeps(const Timeline& timeline, std::int32_t code, double fromMs, double toMs,
                 const std::function<bool(const WalkedSweep&)>& visit)
{
    SweepVisit visiting(fromMs, toMs, visit);
    bool goesOn = true;
    for (std::size_t i = timeline.fileAt(fromMs); goesOn && i < timeline.files.size(); ++i) {
        const RecordedFile& file = *timeline.files[i];
        const Inspection::Summary summary = readTables(file);
        visiting.nextFile();
        Inspection::walkRecords(file.path, summary, [&](const Inspection::Record& record) {
            goesOn = record.code != code || record.timeMs == 0 || visiting.take(file, record);
            return goesOn;
        });
    }
    if (goesOn) {
        visiting.tellBefore();
    }
}

}  // namespace RecView
