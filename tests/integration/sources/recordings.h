// The real program run on files of a test, and what its recordings hold.
#pragma once

#include <QByteArray>

#include <nlohmann/json.hpp>

#include "support/program.h"

struct Record {
    unsigned long long timeMs;  ///< since the recording's start
    std::int32_t code;
    std::string text;
};

struct RecordedFile {
    unsigned long long startUs = 0;  ///< since 1970 UTC
    unsigned long long stopUs = 0;   ///< likewise
    std::vector<Record> records;

    /// After the initial states, the numbers of one kind.
    struct Number {
        unsigned long long timeUs;  ///< since 1970 UTC
        double number;
    };
    [[nodiscard]] std::vector<Number> numbers(std::int32_t code) const;
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
    [[nodiscard]] Result run(const QStringList& arguments, const QByteArray& input = {}) const;
    /// @return its path
    [[nodiscard]] QString write(const char* name, const QByteArray& bytes) const;
    /// Empty where the real data is missing.
    [[nodiscard]] static QString realData(const char* name);

    QTemporaryDir m_directory;
};
