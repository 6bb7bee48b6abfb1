// Recovering any bytes, with and without a journal of any content.
#include <unistd.h>

#include <recording2/format/journal.h>
#include <recording2/inspection/rescue/recovery.h>
#include <recording2/inspection/verify/verification.h>

#include "target.h"

namespace Fuzzing {

namespace {

namespace fs = std::filesystem;
namespace Inspection = Recording2::Inspection;
namespace Journal = Recording2::Format::Journal;

constexpr std::uint64_t Nonce = 0x0123'4567'89ab'cdefU;

/// A folder in memory for the files of this process.
class Folder {
public:
    Folder() : m_path(base() / ("fuzz-journal-" + std::to_string(::getpid()))) { fs::create_directories(m_path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code error;
        fs::remove_all(m_path, error);
    }
    [[nodiscard]] std::string file(const char* name) const { return (m_path / name).string(); }

private:
    static fs::path base() { return fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path(); }

    fs::path m_path;
};

void write(const std::string& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    require(file.good(), "the files of the test can be written");
}

/// Takes an input apart; after its end there are zeros.
class Pieces {
public:
    explicit Pieces(const std::string& input) : m_input(input) {}
    std::uint32_t number()
    {
        const std::string bytes = text(sizeof(std::uint32_t));
        char whole[sizeof(std::uint32_t)] = {};
        std::copy(bytes.begin(), bytes.end(), whole);
        return Recording2::Format::getInt32(whole);
    }
    std::string text(std::size_t size)
    {
        const std::size_t from = std::min(m_next, m_input.size());
        m_next = from + std::min(size, m_input.size() - from);
        return m_input.substr(from, m_next - from);
    }
    std::string rest() { return text(m_input.size()); }

private:
    const std::string& m_input;
    std::size_t m_next = 0;
};

/// The record that a walker finds at a position of file and tail, for the checksum of its entry.
struct FoundRecord {
    std::int32_t code = 0;
    std::string data;
};
FoundRecord recordAt(const std::string& bytes, std::size_t position)
{
    FoundRecord found;
    const std::size_t code = bytes.find('#', position);
    const std::size_t length = code == std::string::npos ? code : bytes.find('#', code + 1);
    if (length == std::string::npos || length - position > 20) {
        return found;
    }
    found.code = static_cast<std::int32_t>(std::atol(bytes.c_str() + position));
    const auto size = static_cast<std::size_t>(std::max(0L, std::atol(bytes.c_str() + code + 1)));
    found.data = bytes.substr(length + 1, size);
    return found;
}

/// A journal whose checks are right, whatever it says.
std::string journalOf(Pieces& pieces, std::string& file)
{
    constexpr std::size_t MostText = 4096;
    std::string journal(Journal::EntriesOffset + 2 * Journal::LatestEntries * Journal::EntryBytes, '\0');
    char* const page = journal.data();
    Journal::putIdentity(page, {Nonce, 1});
    const std::uint32_t tailStart = pieces.number();
    Recording2::Format::putInt64(page + Journal::TailStartOffset,
                                 Journal::seal(Nonce, Journal::TailStartOffset, tailStart));
    Recording2::Format::putInt64(page + Journal::HandedOffset, Journal::seal(Nonce, Journal::HandedOffset, 0));
    Journal::putHeader(page, Nonce, 1, pieces.text(pieces.number() % Journal::HeaderSlotBytes));
    const std::uint32_t typesEnd = pieces.number();
    const std::string tail = pieces.text(pieces.number() % MostText);
    std::copy(tail.begin(), tail.end(), journal.begin() + Journal::TailOffset);
    std::string entries = pieces.text(pieces.number() % MostText);
    file = pieces.rest();
    std::string whole = file.substr(0, tailStart);
    whole.resize(std::min<std::size_t>(tailStart, file.size() + MostText), '\0');
    whole += tail;
    if (typesEnd != 0) {
        const std::string types = whole.substr(std::min<std::size_t>(500, whole.size()), typesEnd - 500U);
        Journal::putTypes(page, Nonce, 500, types);
    }
    entries.resize(entries.size() / 9 * 9);
    for (std::size_t i = 0; i * 9 < entries.size(); ++i) {
        const char* const from = entries.data() + i * 9;
        Journal::Entry entry{Recording2::Format::getInt32(from), 0, (from[8] & 1) != 0, true, 0};
        entry.position = static_cast<std::int32_t>(Recording2::Format::getInt32(from + 4) & 0x7fff'ffffU);
        const FoundRecord record = recordAt(whole, static_cast<std::size_t>(entry.position));
        entry.recordChecksum =
            Journal::recordChecksum(Nonce, i, record.code, record.data) ^ ((from[8] & 2) != 0 ? 8U : 0U);
        Journal::putEntry(page + Journal::LatestOffset + i * Journal::EntryBytes, Nonce, i, entry);
        Journal::putStopTime(page, Nonce, i, entry.timeMs);
    }
    return journal;
}

/// A journal of which the input gives the bytes at some places.
std::string patchedJournal(Pieces& pieces, std::string& file)
{
    std::string journal = journalOf(pieces, file);
    Pieces patches(file);
    const std::uint32_t count = patches.number() % 8;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t offset = patches.number() % journal.size();
        const std::string bytes = patches.text(patches.number() % 64);
        journal.replace(offset, std::min(bytes.size(), journal.size() - offset), bytes);
    }
    journal.resize(journal.size() - patches.number() % journal.size());
    file = patches.rest();
    return journal;
}

}  // namespace

void runJournal(const std::string& input)
{
    static const Folder folder;
    const std::string recording = folder.file("a.tmp");
    Pieces pieces(input);
    const std::string kind = pieces.text(1);
    std::string file;
    std::string journal;
    if (kind == "j") {
        journal = journalOf(pieces, file);
    } else if (kind == "p") {
        journal = patchedJournal(pieces, file);
    } else {
        file = pieces.rest();
    }
    write(recording, file);
    if (!journal.empty()) {
        write(recording + ".journal", journal);
    }
    const std::string output = folder.file("a.rec");
    const Inspection::Recovery recovery = Inspection::recover(recording, {output, 0, {}, {}});
    const bool made = recovery.outcome == Inspection::RecoveryOutcome::Whole ||
                      recovery.outcome == Inspection::RecoveryOutcome::SomethingLost;
    require(made == fs::exists(output), "a file is made when it is said, and only then");
    require(made || !recovery.problem.empty(), "who gets nothing is told why");
    if (made) {
        const Inspection::Verification verified = Inspection::verify(output);
        require(verified.readability == Inspection::Readability::Ok, "what was recovered can be read");
        require(verified.records == recovery.records, "every record that was kept is there");
        fs::remove(output);
    }
    fs::remove(recording + ".journal");
}

std::vector<std::string> journalSeeds()
{
    const auto number = [](std::uint32_t value) {
        std::string bytes(sizeof value, '\0');
        Recording2::Format::putInt32(bytes.data(), value);
        return bytes;
    };
    std::string area(499, '0');
    area += '#';
    const std::string types = "1#3#11#5#LEVEL6#/LEVEL";
    const std::string records = "3#4#1.5;3#2#7;3#4#2.5;";
    const auto first = static_cast<std::uint32_t>(area.size() + types.size());
    const std::string header = "2#0#9e+07#1.2e+08#100000#-30#120#" + std::string(8, '\1') + '#' + std::string(8, '\1') +
                               "#1#J1#D1#T500#0#0#0#0#0#";
    std::string entries;
    for (const std::uint32_t at : {0U, 8U, 14U}) {
        entries += number(at + 10) + number(first + at) + (at == 8 ? '\1' : '\0');
    }
    const auto with = [&](char kind, std::uint32_t tailStart, const std::string& tail, const std::string& patches) {
        return kind + number(tailStart) + number(static_cast<std::uint32_t>(header.size())) + header + number(first) +
               number(static_cast<std::uint32_t>(tail.size())) + tail +
               number(static_cast<std::uint32_t>(entries.size())) + entries + patches + area + types;
    };
    const std::string noPatch = number(0) + number(0);
    const std::string onePatch = number(1) + number(Journal::LatestOffset) + number(4) + "abcd" + number(100);
    std::vector<std::string> seeds{"f" + area + types + records, with('j', first, records, ""),
                                   with('p', first, records, noPatch), with('p', first, records, onePatch)};
    for (const std::string& recording : recordingSeeds()) {
        seeds.push_back("f" + recording);
        if (recording.size() > area.size()) {
            seeds.push_back("f" + area + recording.substr(area.size()));
        }
    }
    return seeds;
}

}  // namespace Fuzzing
