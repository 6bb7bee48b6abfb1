// The bytes before and after each change, and a checksum of all of them.
#include "undo.h"

#include "littleendian.h"
#include "wordchecksum.h"

namespace Recording2::Format {

namespace {

constexpr std::string_view UndoMagic = "REC2UNDO";
constexpr std::uint64_t UndoVersion = 1;
constexpr std::size_t WordBytes = sizeof(std::uint64_t);
constexpr std::size_t ChecksumOffset = 2 * WordBytes;
constexpr std::size_t CoveredOffset = 3 * WordBytes;

void appendWord(std::string& out, std::uint64_t value)
{
    char word[WordBytes];
    out.append(word, putInt64(word, value));
}

std::uint64_t checksumOf(std::string_view bytes)
{
    const std::string_view covered = bytes.substr(CoveredOffset);
    return WordChecksum(covered.size()).add(covered).value();
}

/// What stood there lies within the file as it was; what comes in its place may go on after its end.
bool isWithin(const ChangedBytes& change, std::int64_t sizeBefore)
{
    return change.position >= 0 && change.position <= sizeBefore &&
           change.before.size() <= static_cast<std::uint64_t>(sizeBefore - change.position) &&
           change.before.size() <= change.after.size();
}

/// Takes fields from the front of the bytes, as far as they go.
class UndoReader {
public:
    explicit UndoReader(std::string_view bytes) : m_left(bytes) {}

    [[nodiscard]] bool good() const { return m_good; }
    std::uint64_t word()
    {
        const std::string_view bytes = take(WordBytes);
        return m_good ? getInt64(bytes.data()) : 0;
    }
    std::string_view take(std::uint64_t size)
    {
        m_good = m_good && size <= m_left.size();
        const std::string_view taken = m_left.substr(0, m_good ? static_cast<std::size_t>(size) : 0);
        m_left.remove_prefix(taken.size());
        return taken;
    }

private:
    std::string_view m_left;
    bool m_good = true;
};

}  // namespace

std::string encodeUndo(const Undo& undo)
{
    std::string bytes(UndoMagic);
    appendWord(bytes, UndoVersion);
    appendWord(bytes, 0);
    appendWord(bytes, static_cast<std::uint64_t>(undo.sizeBefore));
    appendWord(bytes, undo.changes.size());
    for (const ChangedBytes& change : undo.changes) {
        appendWord(bytes, static_cast<std::uint64_t>(change.position));
        appendWord(bytes, change.before.size());
        appendWord(bytes, change.after.size());
        bytes += change.before;
        bytes += change.after;
    }
    putInt64(bytes.data() + ChecksumOffset, checksumOf(bytes));
    return bytes;
}

std::optional<Undo> decodeUndo(std::string_view bytes)
{
    if (bytes.size() < CoveredOffset || bytes.substr(0, UndoMagic.size()) != UndoMagic ||
        getInt64(bytes.data() + WordBytes) != UndoVersion ||
        getInt64(bytes.data() + ChecksumOffset) != checksumOf(bytes)) {
        return std::nullopt;
    }
    UndoReader reader(bytes.substr(CoveredOffset));
    Undo undo;
    undo.sizeBefore = static_cast<std::int64_t>(reader.word());
    const std::uint64_t count = reader.word();
    for (std::uint64_t i = 0; i < count && reader.good(); ++i) {
        ChangedBytes change;
        change.position = static_cast<std::int64_t>(reader.word());
        const std::uint64_t before = reader.word();
        const std::uint64_t after = reader.word();
        change.before = reader.take(before);
        change.after = reader.take(after);
        if (!isWithin(change, undo.sizeBefore)) {
            return std::nullopt;
        }
        undo.changes.push_back(std::move(change));
    }
    return reader.good() && !undo.changes.empty() ? std::optional(std::move(undo)) : std::nullopt;
}

}  // namespace Recording2::Format
