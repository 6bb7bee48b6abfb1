// Reading a recording's bytes for their checksum, and looking at the file that they are in.
#include "content.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdlib>

#include <recording2/format/checksum.h>
#include <recording2/inspection/filename.h>
#include <recording2/inspection/scan.h>
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

}  // namespace RecView
