// The real program run on files of a test, and what its recordings hold.
#pragma once

#include <nlohmann/json.hpp>

#include <recording2/fileaccess.h>
#include <values/maps.h>

#include "support/program.h"

/// Of the keywords that are looked at.
namespace Code {
enum : std::int32_t {
    RfSpectrum = 1,
    IfSpectrum = 2,
    Bandwidth = 5,
    Modulation = 6,
    DfSpectrum = 20,
    Latitude = 25,
    Longitude = 26,
    Level = 36,
    TrueHeading = 41,
    Altitude = 42,
    Speed = 43,
    Pitch = 44,
    Roll = 45,
    Frequency = 46
};
}  // namespace Code

struct Record {
    unsigned long long timeMs;  ///< since the recording's start
    std::int32_t code;
    std::string text;
};

struct RecordedFile {
    Recording2::CHeaderData header;
    unsigned long long startUs = 0;  ///< of the header, since 1970 UTC
    std::vector<Record> records;

    /// Of one keyword.
    [[nodiscard]] std::vector<std::string> texts(std::int32_t code) const;

    /// After the initial states, the numbers of one kind.
    struct Number {
        unsigned long long timeUs;  ///< since 1970 UTC
        double number;
    };
    [[nodiscard]] std::vector<Number> numbers(std::int32_t code) const;
    /// The same with so many decimals; "nan" where the number became unknown.
    [[nodiscard]] std::vector<std::string> changes(std::int32_t code, int digits) const;

    /// After the initial state, in which nothing is measured, the spectra of one kind.
    struct Spectrum {
        unsigned long long timeUs;     ///< since 1970 UTC
        unsigned long long ownTimeUs;  ///< likewise, of the measurement
        values::ChannelRange range;
        std::vector<float> cells;
    };
    [[nodiscard]] std::vector<Spectrum> spectra(std::int32_t code) const;
};

[[nodiscard]] RecordedFile readRecordedFile(const std::string& path);

class RecordingTest : public testing::Test {
protected:
    struct Result {
        int exitCode = -1;
        std::string messages;
        nlohmann::json summary;

        /// Of the only file of a recorder; empty when there is another number of files.
        [[nodiscard]] std::string path(const std::string& recorder) const;
    };

    RecordingTest();
    void start(QProcess& process, const QStringList& arguments) const;
    static Result finish(QProcess& process);
    /// Waits until the program has said that.
    static void awaitMessage(QProcess& process, const char* words);
    [[nodiscard]] Result run(const QStringList& arguments, const QByteArray& input = {}) const;
    /// @return its path
    [[nodiscard]] QString write(const char* name, const QByteArray& bytes) const;
    /// Empty where the real data is missing.
    [[nodiscard]] static QString realData(const char* name);

    QTemporaryDir m_directory;
};
