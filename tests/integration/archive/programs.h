// recstation and rectool with an archive of a test's own.
#pragma once

#include <QByteArray>

#include <nlohmann/json.hpp>

#include <zelvo/archive.h>

#include "support/program.h"

namespace ArchiveTests {

struct Result : TestSupport::ProgramResult {
    [[nodiscard]] nlohmann::json json() const { return nlohmann::json::parse(out); }
};

/// A station with two recorders, an archive, and its storage; skips where the archive was not built.
class ArchivePrograms : public testing::Test {
protected:
    void SetUp() override;

    /// Writes the configuration of recorders and archive. @param keys of the table [archive] besides the directories
    void configure(const QString& keys = QString()) const;
    [[nodiscard]] QString path(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] QString config() const { return path("station.toml"); }
    [[nodiscard]] QStringList recordings() const;  ///< in the recording directory
    [[nodiscard]] Zelvo::ArchiveConfiguration configuration() const;

    [[nodiscard]] Result recstation(const QStringList& arguments, const QByteArray& input = {}) const;
    /// Simulates some seconds, which gives a recording of the receiver and one of the direction finder.
    [[nodiscard]] Result simulate() const;
    /// The same where nothing else is tested. @return the addresses of the two
    [[nodiscard]] std::vector<std::string> recorded() const;
    [[nodiscard]] Result rectool(const QStringList& arguments) const;
    /// Of the file of an address.
    [[nodiscard]] Zelvo::FileInfo info(const std::string& address) const;
    [[nodiscard]] QString storedFile(const std::string& address) const;

private:
    [[nodiscard]] Result run(const char* program, const QStringList& arguments, const QByteArray& input) const;

    QTemporaryDir m_directory;
};

}  // namespace ArchiveTests
