// Random recordings, written by the library and judged by the model reader: every byte and every answer.
//
// The seeds are fixed, so a failure repeats; the round is in its message. A case that never ended would be stopped by
// the time limit of the test.
#include <recording2/fileaccess.h>

#include "randomscript.h"
#include "support/libraryobjects.h"
#include "support/modelreader.h"

using namespace DifferentialTests;
using namespace Recording2;
using namespace TestSupport;

namespace {

std::string expectedBytes(const Script& script)
{
    ReferenceRecording reference;
    if (script.types) {
        reference.types(*script.types);
    }
    for (const Stored& record : script.records) {
        reference.record(record.code, record.data, record.time, record.rangeDef);
    }
    return reference.close(script.header);
}

/// The library's objects, and those of the model beside them; each operation is done on both and compared.
class Comparison {
public:
    Comparison(const std::string& path, bool withTables)
        : m_library(path.c_str(), QString(), nullptr, false, withTables, false, nullptr, nullptr)
    {
        try {
            m_model = std::make_unique<ModelReader>(path, withTables);
        } catch (const TestSupport::Undefined&) {
            return;  // opening it must only come to an end
        }
        EXPECT_EQ(m_library.IsValidFile(), m_model->valid());
        if (m_model->valid()) {
            for (const auto& [time, position] : m_model->times()) {
                m_times.push_back(time);
            }
        }
    }

    /// Whether the format still says what comes next.
    [[nodiscard]] bool defined() const { return m_model != nullptr && m_model->valid(); }

    /// One random operation; afterwards the comparison may be at its end.
    void step(Dice& dice)
    {
        const std::uint64_t time = randomQuery(dice);
        const std::int32_t code = dice.oneIn(4) ? 0 : (dice.oneIn(4) ? dice.int32() : m_expected.code);
        switch (dice.below(12)) {
            case 0:
                return compare("readfirst", [](auto& f, auto& r) { return f.readfirst(r); });
            case 1:
            case 2:
                return compare("readnext", [](auto& f, auto& r) { return f.readnext(r); });
            case 3:
            case 4:
                return compare("read at", [time](auto& f, auto& r) { return f.read(r, time); });
            case 5:
                return compare("read", [](auto& f, auto& r) { return f.read(r); });
            case 6:
                return compare("readAndReturnTimeOfCurrentCmd",
                               [](auto& f, auto& r) { return f.readAndReturnTimeOfCurrentCmd(r); });
            case 7:
                return compare("readfirst by code", [code](auto& f, auto& r) { return f.readfirst(r, code); });
            case 8:
                return compare("readnext by code", [code](auto& f, auto& r) { return f.readnext(r, code); });
            case 9:
                return compare("readprev", [time](auto& f, auto& r) { return f.readprev(r, time); });
            case 10:
                return dice.oneIn(3) ? compareTables() : compareHeader();
            default:
                return dice.oneIn(3) ? compareTypes() : compareHeader();
        }
    }

    void compareHeader()
    {
        CHeaderData header;
        ModelHeader expected;
        const std::uint64_t answer = m_library.read(header);
        if (!agreesWithModel([&] { return m_model->readHeader(expected); }, answer, "read header") || answer == 0) {
            return;
        }
        EXPECT_EQ(header.majorversion(), expected.majorVersion);
        EXPECT_EQ(header.minorversion(), expected.minorVersion);
        EXPECT_EQ(header.startFreq(), expected.frequencies[0]);
        EXPECT_EQ(header.stopFreq(), expected.frequencies[1]);
        EXPECT_EQ(header.stepWidth(), expected.frequencies[2]);
        EXPECT_EQ(header.minLevel(), expected.levels[0]);
        EXPECT_EQ(header.maxLevel(), expected.levels[1]);
        EXPECT_EQ(header.startTS().getTimeStamp(), expected.timesMs[0] * 1'000);
        EXPECT_EQ(header.stopTS().getTimeStamp(), expected.timesMs[1] * 1'000);
        EXPECT_EQ(header.isAutomaticRec(), expected.automatic);
        // A text that holds a NUL may come back up to there or whole: it was never a text.
        compareText(std::string(header.getJobID()), expected.texts[0]);
        compareText(std::string(header.deviceName()), expected.texts[1]);
        compareText(std::string(header.deviceType()), expected.texts[2]);
    }

    void compareTypes()
    {
        CVTTypesData types;
        std::vector<TypeFields> expected;
        const std::uint64_t answer = m_library.read(types);
        if (!agreesWithModel([&] { return m_model->readTypes(expected); }, answer, "read types")) {
            return;
        }
        EXPECT_TRUE(TestSupport::fieldsOf(types) == expected);
    }

    void compareTables()
    {
        m_library.readTables();
        agreesWithModel(
            [&] {
                m_model->readTables();
                return 0U;
            },
            0, "readTables");
    }

private:
    static void compareText(const std::string& text, const std::optional<std::string>& expected)
    {
        if (expected) {
            EXPECT_EQ(text, expected->substr(0, expected->find('\0')));
        }
    }

    /// Runs the model; false when the format does not say what comes out, which ends the comparison.
    template <typename Operation>
    bool agreesWithModel(const Operation& operation, std::uint64_t answer, const char* name)
    {
        try {
            EXPECT_EQ(answer, operation()) << name;
            return true;
        } catch (const TestSupport::Undefined&) {
            m_model.reset();
            return false;
        }
    }

    template <typename Operation>
    void compare(const char* name, const Operation& operation)
    {
        const std::uint64_t answer = operation(m_library, m_record);
        if (agreesWithModel([&] { return operation(*m_model, m_expected); }, answer, name)) {
            EXPECT_EQ(m_record.cmd(), m_expected.code) << name;
            EXPECT_TRUE(TestSupport::dataOf(m_record) == m_expected.data) << name;
        }
    }

    /// A time of a record or close to one, 0, or any.
    std::uint64_t randomQuery(Dice& dice)
    {
        if (m_times.empty() || dice.oneIn(10)) {
            return dice.oneIn(2) ? 0 : dice.any();
        }
        const std::uint64_t time = dice.of(m_times);
        return dice.oneIn(4) ? time + dice.below(3) - 1 : time;
    }

    CFileAccess m_library;
    std::unique_ptr<ModelReader> m_model;
    CVTCmdData m_record;
    ModelRecord m_expected;
    std::vector<std::uint64_t> m_times;
};

class Differential : public testing::Test {
protected:
    [[nodiscard]] QString filePath(const QString& name) const { return m_directory.filePath(name); }

    /// Writes the script through the library and gives the bytes of the closed file.
    [[nodiscard]] std::string write(Script script) const
    {
        QFile::remove(filePath("a.rec"));
        CFileAccess file(TestSupport::fileName8(filePath("a.tmp")).c_str(), QString(), nullptr, true, false, false,
                         nullptr, nullptr);
        if (script.types) {
            CVTTypesData types = TestSupport::makeTypes(*script.types);
            file.write(types);
        }
        for (const Stored& stored : script.records) {
            CVTCmdData record = TestSupport::makeRecord(stored.code, stored.data);
            file.write(record, stored.time, stored.rangeDef);
        }
        CHeaderData header = TestSupport::makeHeader(script.header);
        file.CloseRecording(header, true);
        return TestSupport::readFile(filePath("a.rec"));
    }

    /// Navigates at random on the bytes. True when the format said to the end what comes out.
    [[nodiscard]] bool navigate(Dice& dice, const std::string& bytes, int steps) const
    {
        const QString name = filePath("b.rec");
        TestSupport::writeFile(name, bytes);
        Comparison comparison(TestSupport::fileName8(name), !dice.oneIn(10));
        for (int i = 0; i < steps && comparison.defined() && !HasFailure(); ++i) {
            comparison.step(dice);
        }
        return comparison.defined();
    }

private:
    QTemporaryDir m_directory;
};

/// The parts of a file after its records, and those before them.
std::vector<std::pair<std::size_t, std::size_t>> tableRanges(const Script& script, const std::string& bytes)
{
    const HeaderFields header = TestSupport::parseRecording(bytes).header;
    std::vector<std::pair<std::size_t, std::size_t>> ranges{{0, header.bytes().size()}};
    if (header.typeTable != 0) {
        ranges.emplace_back(header.typeTable, TestSupport::typeTableBytes(*script.types).size());
    }
    if (header.timeTable != 0) {
        const auto start = static_cast<std::size_t>(header.timeTable);
        ranges.emplace_back(start, bytes.size() - start);
    }
    return ranges;
}

/// Changes a few bytes in the header and the tables; now and then cuts the file off.
std::string damaged(Dice& dice, const Script& script, std::string bytes)
{
    static const std::vector<char> meaningful{'#', '0', '1', '9', '-', '+', ' ', '.', 'e', 'x', '\0', '\n'};
    const auto ranges = tableRanges(script, bytes);
    for (std::uint64_t flips = 1 + dice.below(3); flips > 0; --flips) {
        const auto& [start, size] = dice.of(ranges);
        if (size > 0) {
            char& byte = bytes[start + dice.below(size)];
            byte = dice.oneIn(2) ? dice.of(meaningful) : static_cast<char>(byte ^ (1 << dice.below(8)));
        }
    }
    if (dice.oneIn(6)) {
        const auto& [start, size] = ranges.back();
        bytes.resize(start + dice.below(size));
    }
    return bytes;
}

}  // namespace

TEST_F(Differential, EveryByteOfRandomRecordingsIsAsTheFormatSays)
{
    Dice dice(20'240'501);
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const Script script = randomScript(dice);
        const std::string bytes = write(script);
        ASSERT_TRUE(bytes == expectedBytes(script));
        if (!script.sound) {
            continue;
        }
        std::size_t stored = 0;
        const TestSupport::ParsedRecording parsed = TestSupport::parseRecording(bytes);
        for (const Stored& record : script.records) {
            if (!record.data.empty()) {
                ASSERT_LT(stored, parsed.records.size());
                EXPECT_EQ(parsed.records[stored].code, record.code);
                EXPECT_TRUE(parsed.records[stored].data == record.data);
                ++stored;
            }
        }
        EXPECT_EQ(stored, parsed.records.size());
        if (script.types) {
            EXPECT_TRUE(parsed.types == *script.types);
        }
    }
}

TEST_F(Differential, EveryNavigationAnswerIsThatOfTheModel)
{
    Dice dice(77'001);
    int defined = 0;
    constexpr int rounds = 400;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        defined += navigate(dice, expectedBytes(randomScript(dice)), 60) ? 1 : 0;
    }
    EXPECT_GT(defined, rounds / 2);
}

TEST_F(Differential, EveryAnswerOnADamagedFileIsThatOfTheModel)
{
    Dice dice(4'242);
    int defined = 0;
    constexpr int rounds = 1'500;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Script script = randomScript(dice);
        if (script.sound) {
            defined += navigate(dice, damaged(dice, script, expectedBytes(script)), 25) ? 1 : 0;
        }
    }
    EXPECT_GT(defined, rounds / 3);
}
