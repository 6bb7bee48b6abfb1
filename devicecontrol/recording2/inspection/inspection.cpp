// What a file is by its first bytes, its header's fields, its blocks' positions.
#include "inspection.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <initializer_list>
#include <system_error>
#include <type_traits>

#include <system/nativefile.h>
#include "../file/files.h"
#include "../format/layout.h"
#include "filename.h"
#include "recordingname.h"
#include "scan.h"
#include "strict/fieldreader.h"
#include "strict/tables.h"

namespace Recording2::Inspection {

namespace {

void refuse(Summary& summary, Readability readability, const std::string& problem)
{
    summary.readability = readability;
    summary.problem = problem;
}

/// Whether there is a file that can be opened; if not, the summary says why.
bool isFile(const std::string& path, Summary& summary)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(native(path), error);
    switch (status.type()) {
        case std::filesystem::file_type::regular:
            return true;
        case std::filesystem::file_type::not_found:
            refuse(summary, Readability::Missing, "There is no such file.");
            return false;
        case std::filesystem::file_type::directory:
            refuse(summary, Readability::Unreadable, "This is a directory, not a file.");
            return false;
        case std::filesystem::file_type::none:
            refuse(summary, Readability::Unreadable, "The file cannot be reached: " + error.message() + ".");
            return false;
        default:
            refuse(summary, Readability::Unreadable, "This is not an ordinary file.");
            return false;
    }
}

/// Whether the file is (the beginning of) a header area into which nothing was written.
bool isPlaceholder(InputFile& source)
{
    const std::int64_t zeros = std::min<std::int64_t>(source.size(), Format::HeaderAreaBytes - 1);
    FieldReader fields(source, 0, source.size());
    return fields.holdsOnly(0, zeros, '0') &&
           (source.size() < Format::HeaderAreaBytes || fields.holdsOnly(zeros, zeros + 1, Format::Separator));
}

/// "3 min", in the largest unit that gives more than one.
std::string inWords(std::int64_t seconds)
{
    struct Unit {
        std::int64_t seconds;
        const char* name;
    };
    for (const Unit unit : {Unit{std::int64_t{24} * 3600, " days"}, Unit{3600, " h"}, Unit{60, " min"}}) {
        if (seconds >= 2 * unit.seconds) {
            return std::to_string(seconds / unit.seconds) + unit.name;
        }
    }
    return std::to_string(seconds) + " s";
}

void refuseOpenRecording(const std::string& path, Summary& summary)
{
    refuse(summary, Readability::NeverClosed, "The recording was never closed: its header was not written.");
    if (!isBeingWritten(path)) {
        return;
    }
    summary.problem = "This recording is being written: " + std::to_string(summary.fileSize) + " bytes so far";
    const auto now =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
    constexpr std::int64_t MsPerSecond = 1000;
    const auto start = static_cast<std::int64_t>(startInName(path).value_or(0)) / MsPerSecond;
    if (start > 0 && start <= now) {
        summary.problem += ", begun " + inWords(now - start) + " ago";
    }
    summary.problem += '.';
}

/// Tells from the first bytes what the file is. There is no signature: a recording begins with two version numbers.
bool isRecording(const std::string& path, InputFile& source, Summary& summary)
{
    if (source.size() == 0) {
        refuse(summary, Readability::Empty, "The file is empty.");
    } else if (isPlaceholder(source)) {
        refuseOpenRecording(path, summary);
    } else {
        FieldReader fields(source, 0, source.size());
        std::int16_t major = 0;
        std::int16_t minor = 0;
        if (!fields.number(major) || !fields.number(minor)) {
            refuse(summary, Readability::NoRecording, "This is not a recording.");
        } else if (major < Format::OldestMajorVersion) {
            refuse(summary, Readability::OldFormat,
                   "The recording is of the old format, version " + std::to_string(major) + "." +
                       std::to_string(minor) + ", which cannot be read.");
        } else if (source.size() < Format::HeaderAreaBytes) {
            refuse(summary, Readability::Truncated, "The file ends within its header: it was cut off.");
        }
    }
    return summary.readability == Readability::Ok;
}

/// The header field by field. Reading ends at the first field that is damaged, because nothing tells where the next one
/// begins.
class HeaderReader {
public:
    HeaderReader(InputFile& source, Summary& summary) : m_fields(source, 0, source.size()), m_summary(summary) {}

    void read()
    {
        Header& h = m_summary.header;
        std::int32_t automatic = 0;
        const bool sound = field("The major version", h.majorVersion) && field("The minor version", h.minorVersion) &&
                           field("The start frequency", h.startFrequencyHz) &&
                           field("The stop frequency", h.stopFrequencyHz) && field("The step width", h.stepWidthHz) &&
                           field("The minimum level", h.minLevel) && field("The maximum level", h.maxLevel) &&
                           field("The start time", h.startMs) && field("The stop time", h.stopMs) &&
                           field("The job id", h.jobId) && field("The device name", h.deviceName) &&
                           field("The device type", h.deviceType) &&
                           field("The position of the type table", h.positions.typeTable) &&
                           field("The position of the first record", h.positions.firstRecord) &&
                           field("The position of the time table", h.positions.timeTable) &&
                           field("The position of the channel range table", h.positions.channelRangeTable) &&
                           field("The position of the bookmark table", h.positions.bookmarkTable) &&
                           field("The flag for automatic recording", automatic);
        h.automatic = automatic >= 1;
        m_summary.ends.header = static_cast<std::int32_t>(std::min(m_fields.position(), Format::LastPosition));
        if (sound && m_summary.ends.header > Format::HeaderAreaBytes) {
            m_summary.findings.push_back({Format::HeaderAreaBytes,
                                          "The header is longer than its 500 bytes and covers "
                                          "what stands behind it."});
        }
    }

private:
    template <typename Value>
    bool field(const char* name, Value& target)
    {
        const std::int64_t offset = m_fields.position();
        if (!m_fields.value(target)) {
            m_summary.findings.push_back({offset, std::string(name) + " " + m_fields.problem() + "."});
            return false;
        }
        m_summary.headerFields.push_back(offset);
        if constexpr (std::is_same_v<Value, std::string>) {
            // A NUL does not keep a text from being read, but the header could not be written again as it is.
            if (target.find('\0') != std::string::npos) {
                m_summary.findings.push_back({offset, std::string(name) + " holds a NUL byte."});
            }
        }
        return true;
    }

    FieldReader m_fields;
    Summary& m_summary;
};

void checkPosition(const std::string& block, std::int32_t position, Summary& summary)
{
    const std::string begins = block + " should begin at " + std::to_string(position);
    if (position == 0) {
        return;
    }
    if (position < 0) {
        summary.findings.push_back({0, begins + ", which is no position."});
    } else if (position < Format::HeaderAreaBytes) {
        summary.findings.push_back({position, begins + ", which is within the header."});
    } else if (position >= summary.fileSize) {
        summary.findings.push_back({summary.fileSize, begins + ", but the file ends at " +
                                                          std::to_string(summary.fileSize) + ": it was cut off."});
    }
}

void checkOrder(Summary& summary)
{
    const Header& h = summary.header;
    const auto expect = [&](bool ordered, std::int32_t position, const char* text) {
        if (!ordered) {
            summary.findings.push_back({std::clamp<std::int64_t>(position, 0, summary.fileSize), text});
        }
    };
    const std::int32_t times = h.positions.timeTable;
    expect((h.positions.firstRecord == 0) == (times == 0), h.positions.firstRecord,
           times == 0 ? "There are records but no time table." : "There is a time table but no record.");
    expect(times == 0 || h.positions.firstRecord < times, times, "The time table stands in front of the records.");
    expect(h.positions.firstRecord == 0 || h.positions.typeTable <= h.positions.firstRecord, h.positions.typeTable,
           "The type table does not stand in front of the records.");
    for (const std::int32_t table : {h.positions.channelRangeTable, h.positions.bookmarkTable}) {
        expect(table == 0 || table > times, table,
               "The channel range or bookmark table stands in front of the time table.");
    }
}

void checkPositions(Summary& summary)
{
    const Header& h = summary.header;
    checkPosition("The type table", h.positions.typeTable, summary);
    checkPosition("The first record", h.positions.firstRecord, summary);
    checkPosition("The time table", h.positions.timeTable, summary);
    checkPosition("The channel range table", h.positions.channelRangeTable, summary);
    checkPosition("The bookmark table", h.positions.bookmarkTable, summary);
    checkOrder(summary);
}

enum class Extent : std::uint8_t { Head, All };

/// @param torn set when somebody changed the file while it was read
Summary inspectOnce(const std::string& path, Extent extent, bool& torn)
{
    Summary summary;
    torn = false;
    if (!isFile(path, summary)) {
        return summary;
    }
    InputFile source(native(path), InputFile::Size::AtOpening);
    if (!source.good()) {
        refuse(summary, Readability::Unreadable,
               "The file cannot be opened: " + System::errorText(source.error()) + ".");
        return summary;
    }
    summary.fileSize = source.size();
    if (isRecording(path, source, summary)) {
        HeaderReader(source, summary).read();
        checkPositions(summary);
        readTypeTable(source, summary);
        if (extent == Extent::All) {
            readTimeTable(source, summary);
            readChannelRangeTable(source, summary);
            readBookmarkTable(source, summary);
        }
        torn = !source.isUnchanged();
    }
    return summary;
}

Summary inspectAs(const std::string& path, Extent extent)
{
    constexpr int MostAgain = 10;
    bool torn = false;
    Summary summary = inspectOnce(path, extent, torn);
    for (int again = 0; torn && again < MostAgain; ++again) {
        summary = inspectOnce(path, extent, torn);
    }
    return summary;
}

}  // namespace

Summary inspect(const std::string& path)
{
    return inspectAs(path, Extent::All);
}

/// A recorder holds its file locked for as long as it writes. Others may look at the same moment.
bool isBeingWritten(const std::string& path)
{
    System::NativeFile file;
    return file.open(native(path), System::Access::Read) == 0 &&
           file.lock(System::LockMode::Shared) == System::LockHeld;
}

Summary inspectHead(const std::string& path)
{
    return inspectAs(path, Extent::Head);
}

}  // namespace Recording2::Inspection
