// A directory of stores, each under the content of its recording, and of stamps that tell it without reading. The
// content is the checksum of a recording's bytes.
#include "cache.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include <recording2/format/checksum.h>
#include <recording2/inspection/filename.h>
#include <recording2/inspection/scan.h>
#include <system/names.h>
#include <system/nativefile.h>

namespace RecView {

namespace Inspection = Recording2::Inspection;

namespace {

/// All fields but where the bookmarks are.
std::string headerText(const Inspection::Header& header)
{
    std::string text;
    for (const std::uint64_t number :
         {std::uint64_t{header.startMs}, std::uint64_t{header.stopMs}, static_cast<std::uint64_t>(header.minLevel),
          static_cast<std::uint64_t>(header.maxLevel), static_cast<std::uint64_t>(header.positions.typeTable),
          static_cast<std::uint64_t>(header.positions.firstRecord),
          static_cast<std::uint64_t>(header.positions.timeTable),
          static_cast<std::uint64_t>(header.positions.channelRangeTable), std::uint64_t{header.automatic}}) {
        text += std::to_string(number) + ';';
    }
    for (const std::string* field : {&header.jobId, &header.deviceName, &header.deviceType}) {
        text += std::to_string(field->size()) + ';' + *field;
    }
    return text;
}

constexpr const char* OverviewSuffix = ".overview";
constexpr const char* StampSuffix = ".stamp";
constexpr const char* UnfinishedSuffix = ".part";
constexpr System::FileMode OwnDirectory = 0700;
constexpr System::FileMode OwnFile = 0600;
constexpr std::size_t ContentDigits = 16;

/// What a file of stamps holds.
struct KnownFile {
    FileStamp stamp;
    std::array<char, ContentDigits> content{};
    std::uint64_t checksum = 0;

    [[nodiscard]] std::uint64_t sum() const
    {
        const std::array<std::uint64_t, 5> numbers{stamp.device, stamp.number, static_cast<std::uint64_t>(stamp.bytes),
                                                   static_cast<std::uint64_t>(stamp.writtenNs),
                                                   static_cast<std::uint64_t>(stamp.touchedNs)};
        const std::string_view bytes(reinterpret_cast<const char*>(numbers.data()), sizeof numbers);
        return Recording2::Format::checksum(Recording2::Format::checksum(1, bytes), {content.data(), content.size()});
    }
};

std::filesystem::path ownDirectoryOf(const char* variable, const char* inside)
{
    const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): nothing here sets variables
    return value == nullptr || *value != '/' ? std::filesystem::path() : std::filesystem::path(value) / inside;
}

std::string uniqueName()
{
    static std::atomic<std::uint64_t> counter{std::random_device()() * (std::uint64_t{1} << 32U)};
    return "new-" + std::to_string(std::random_device()()) + "-" + std::to_string(++counter) + UnfinishedSuffix;
}

/// What processes that were ended left behind; those that are in use are locked.
void removeUnfinished(const std::filesystem::path& directory)
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
        System::NativeFile file;
        if (entry.path().extension() == UnfinishedSuffix && file.open(entry.path(), System::Access::Update) == 0 &&
            file.lock() == 0) {
            System::removeFile(entry.path());
        }
    }
}

}  // namespace

std::string contentOf(const std::string& path)
{
    constexpr std::size_t PieceBytes = std::size_t{1} << 20U;
    constexpr std::int64_t HeaderBytes = 500;
    const FileStamp before = stampOf(path);
    const Inspection::Summary summary = Inspection::inspectHead(path);
    System::NativeFile file;
    if (summary.readability != Inspection::Readability::Ok ||
        file.open(Inspection::native(path), System::Access::Read) != 0) {
        return {};
    }
    // Bookmarks stand last; what is before them in another order is damaged, and then all of it counts.
    const auto& positions = summary.header.positions;
    const bool bookmarksAreLast =
        positions.bookmarkTable > std::max({positions.timeTable, positions.channelRangeTable, positions.firstRecord});
    const std::int64_t end =
        bookmarksAreLast ? std::min<std::int64_t>(positions.bookmarkTable, file.size()) : file.size();
    std::uint64_t sum = Recording2::Format::checksum(0, headerText(summary.header));
    std::string piece(PieceBytes, '\0');
    for (std::int64_t at = HeaderBytes; at < end;) {
        const auto size = static_cast<std::size_t>(std::min<std::int64_t>(PieceBytes, end - at));
        if (file.readAt(at, piece.data(), size) != size) {
            return {};
        }
        sum = Recording2::Format::checksum(sum, std::string_view(piece).substr(0, size));
        at += static_cast<std::int64_t>(size);
    }
    if (stampOf(path) != before) {
        return {};
    }
    std::array<char, 16> digits{};
    const auto last = std::to_chars(digits.data(), digits.data() + digits.size(), sum, 16).ptr;
    return std::string(16 - static_cast<std::size_t>(last - digits.data()), '0') + std::string(digits.data(), last);
}

bool FileStamp::isGood() const
{
    constexpr std::int64_t StepNs = 100'000'000;
    const std::int64_t nowNs =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    return touchedNs != 0 && std::abs(nowNs - touchedNs) > StepNs;
}

FileStamp stampOf(const std::string& path)
{
    System::NativeFile file;
    System::FileIdentity identity;
    // Also through a link, as the file is opened.
    if (file.open(Recording2::Inspection::native(path), System::Access::Read) != 0 || file.identity(identity) != 0) {
        return {};
    }
    return {identity.device, identity.number, identity.bytes, identity.changedNs,
            System::touchedNs(Recording2::Inspection::native(path))};
}

std::filesystem::path defaultCacheDirectory()
{
    const std::filesystem::path named = ownDirectoryOf("XDG_CACHE_HOME", "recview");
    return named.empty() ? ownDirectoryOf("HOME", ".cache/recview") : named;
}

Cache::Cache(Options options) : m_options(std::move(options))
{
    if (m_options.directory.empty()) {
        return;
    }
    std::error_code error;
    std::filesystem::create_directories(m_options.directory.parent_path(), error);
    const System::Error made = System::makeDirectory(m_options.directory, OwnDirectory);
    if (made != 0 && made != System::NameTaken) {
        return;
    }
    removeUnfinished(m_options.directory);
    try {
        static_cast<void>(Store::create(m_options.directory / uniqueName()));
        m_usable = true;
    } catch (const std::runtime_error&) {
        m_usable = false;  // nothing can be written there
    }
}

std::filesystem::path Cache::overviewPath(const std::string& content) const
{
    return m_options.directory / (content + "-" + std::to_string(m_options.version) + OverviewSuffix);
}

std::filesystem::path Cache::stampPath(const FileStamp& stamp) const
{
    return m_options.directory / (std::to_string(stamp.device) + "-" + std::to_string(stamp.number) + StampSuffix);
}

std::string Cache::knownContent(const FileStamp& stamp) const
{
    KnownFile known;
    System::NativeFile file;
    const bool isRead = file.open(stampPath(stamp), System::Access::ReadItself) == 0 &&
                        file.readAt(0, reinterpret_cast<char*>(&known), sizeof known) == sizeof known;
    return isRead && known.checksum == known.sum() && known.stamp == stamp
               ? std::string(known.content.data(), known.content.size())
               : std::string();
}

void Cache::noteContent(const FileStamp& stamp, const std::string& content)
{
    KnownFile known{stamp, {}, 0};
    if (!stamp.isGood() || content.size() != known.content.size()) {
        return;
    }
    std::memcpy(known.content.data(), content.data(), known.content.size());
    known.checksum = known.sum();
    const std::filesystem::path unfinished = m_options.directory / uniqueName();
    System::NativeFile file;
    std::size_t written = 0;
    if (file.open(unfinished, System::Access::New, OwnFile) != 0) {
        return;
    }
    const bool isWritten = file.writeAt(0, reinterpret_cast<const char*>(&known), sizeof known, written) == 0;
    if (file.close() != 0 || !isWritten || System::renameReplacing(unfinished, stampPath(stamp)) != 0) {
        System::removeFile(unfinished);
    }
}

std::shared_ptr<Overview> Cache::find(const std::string& path)
{
    const FileStamp stamp = stampOf(path);
    if (!m_usable || stamp.touchedNs == 0) {
        return nullptr;
    }
    std::string content = knownContent(stamp);
    const bool isKnown = !content.empty();
    content = isKnown ? content : contentOf(path);
    if (content.empty()) {
        return nullptr;
    }
    const std::filesystem::path place = overviewPath(content);
    std::shared_ptr<Overview> overview = Overview::open(Store::open(place), recordsOf(path));
    if (overview == nullptr) {
        System::removeFile(place);
        return nullptr;
    }
    static_cast<void>(System::touch(place));  // it was used last
    if (!isKnown && stampOf(path) == stamp) {
        noteContent(stamp, content);
    }
    return overview;
}

std::unique_ptr<Store> Cache::newStore()
{
    if (m_usable) {
        try {
            return Store::create(m_options.directory / uniqueName());
        } catch (const std::runtime_error&) {
            // There is no room in it any more; elsewhere there may be some.
        }
    }
    std::error_code error;
    const std::filesystem::path temporary = std::filesystem::temp_directory_path(error);
    return Store::create(temporary / ("recview-" + uniqueName()));
}

bool Cache::keep(Overview& overview, const std::string& path)
{
    constexpr std::uint64_t LeastRecording = 1'000'000;
    const FileStamp stamp = stampOf(path);
    const std::uint64_t bytes = overview.store().bytes();
    if (!m_usable || !overview.isComplete() || static_cast<std::uint64_t>(stamp.bytes) < LeastRecording ||
        bytes > m_options.bytes) {
        return false;
    }
    const std::string content = contentOf(path);
    if (content.empty() || stampOf(path) != stamp || !overview.keepAs(overviewPath(content))) {
        return false;
    }
    noteContent(stamp, content);
    makeRoom();
    return true;
}

void Cache::makeRoom()
{
    struct Kept {
        System::FileIdentity identity;
        std::filesystem::path path;
    };
    std::vector<Kept> kept;
    std::uint64_t all = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(m_options.directory, error)) {
        System::FileIdentity identity;
        if (entry.path().extension() == OverviewSuffix && System::identityOf(entry.path(), identity) == 0) {
            kept.push_back({identity, entry.path()});
            all += static_cast<std::uint64_t>(identity.bytes);
        }
    }
    std::sort(kept.begin(), kept.end(),
              [](const Kept& a, const Kept& b) { return a.identity.changedNs < b.identity.changedNs; });
    for (const Kept& oldest : kept) {
        if (all <= m_options.bytes) {
            return;
        }
        System::removeFile(oldest.path);
        all -= static_cast<std::uint64_t>(oldest.identity.bytes);
    }
}

std::shared_ptr<Overview> Cache::overviewOf(
    const std::string& path, const MakePart& makePart, std::string& problem,
    const std::function<bool(double, const std::shared_ptr<Overview>&)>& progress)
{
    if (std::shared_ptr<Overview> found = find(path)) {
        return found;
    }
    const FileStamp before = stampOf(path);
    const Summary summary = Inspection::inspect(path);
    if (summary.readability != Inspection::Readability::Ok) {
        problem = summary.problem;
        return nullptr;
    }
    std::unique_ptr<Store> store;
    try {
        store = newStore();
    } catch (const std::runtime_error& refused) {
        problem = refused.what();
        return nullptr;
    }
    OverviewBuilder builder(std::move(store), summary, recordsOf(path), makePart);
    Inspection::RecordReader reader(path, summary);
    Record record;
    constexpr std::int64_t Step = std::int64_t{8} << 20U;
    std::int64_t next = Step;
    while (reader.next(record)) {
        builder.add(record);
        if (progress && reader.bytesRead() >= next) {
            next = reader.bytesRead() + Step;
            if (!progress(static_cast<double>(reader.bytesRead()) / static_cast<double>(reader.bytesInAll()),
                          builder.overview())) {
                return nullptr;
            }
        }
    }
    builder.finish();
    if (builder.overview()->store().failed()) {
        problem = "The overview could not be written: " + System::errorText(builder.overview()->store().error()) + ".";
        return nullptr;
    }
    if (stampOf(path) == before) {
        keep(*builder.overview(), path);
    }
    return builder.overview();
}

}  // namespace RecView
