// Reads and checks the archive's table, and keeps the configuration of the process.
#include "configuration.h"

#include <array>
#include <limits>
#include <mutex>

#include <QDir>
#include <QFile>
#include <QSysInfo>
#include <QUrl>

#include <tomltext/tomltext.h>

namespace Zelvo {

namespace {

constexpr std::int64_t MillisecondsPerSecond = 1'000;

// One table of a configuration file, with the file's name for messages.
class Section {
public:
    Section(const toml::table& table, QString fileName) : m_table(table), m_fileName(std::move(fileName)) {}

    [[noreturn]] void refuse(const char* key, const QString& problem) const
    {
        const toml::node* node = m_table.get(key);
        const auto line = node != nullptr ? node->source().begin.line : m_table.source().begin.line;
        throw ArchiveError(QStringLiteral("%1:%2: %3 of [archive] %4")
                               .arg(m_fileName, QString::number(line), QLatin1String(key), problem));
    }
    template <typename T>
    [[nodiscard]] std::optional<T> value(const char* key, const char* wanted) const
    {
        const toml::node* node = m_table.get(key);
        if (node == nullptr) {
            return std::nullopt;
        }
        std::optional<T> result = node->value_exact<T>();
        if (!result) {
            refuse(key, QStringLiteral("must be %1").arg(QLatin1String(wanted)));
        }
        return result;
    }
    [[nodiscard]] QString text(const char* key) const
    {
        return QString::fromStdString(value<std::string>(key, "a text in quotes").value_or(std::string()));
    }
    [[nodiscard]] std::int64_t number(const char* key, std::int64_t fallback, std::int64_t most) const
    {
        const std::int64_t result = value<std::int64_t>(key, "a whole number").value_or(fallback);
        if (result < 0 || result > most) {
            refuse(key, QStringLiteral("must be from 0 to %1").arg(most));
        }
        return result;
    }
    [[nodiscard]] unsigned mode(const char* key, unsigned fallback) const
    {
        if (m_table.get(key) == nullptr) {
            return fallback;
        }
        bool good = false;
        constexpr int Octal = 8;
        const unsigned result = text(key).toUInt(&good, Octal);
        if (!good || result > 0777U) {
            refuse(key, QStringLiteral("must be permissions in octal such as \"0640\""));
        }
        return result;
    }
    void refuseOtherKeys() const
    {
        constexpr std::array Known = {
            "Directory", "Storage",       "Registry",      "Station",           "CacheBytes",
            "FileMode",  "DirectoryMode", "RemoveExpired", "FirstPauseSeconds", "LongestPauseSeconds"};
        for (const auto& [key, node] : m_table) {
            if (std::find(Known.begin(), Known.end(), key.str()) == Known.end()) {
                refuse(std::string(key.str()).c_str(), QStringLiteral("means nothing"));
            }
        }
    }

private:
    const toml::table& m_table;
    QString m_fileName;
};

bool isInside(const QString& path, const QString& directory)
{
    return path == directory || path.startsWith(directory + QLatin1Char('/'));
}

QString absolute(const QString& path, const char* key)
{
    if (path.isEmpty()) {
        throw ArchiveError(QStringLiteral("the archive's configuration has no %1").arg(QLatin1String(key)));
    }
    if (!QDir::isAbsolutePath(path) || path.contains(QChar(0))) {
        throw ArchiveError(
            QStringLiteral("%1 of the archive must be an absolute path, found \"%2\"").arg(QLatin1String(key), path));
    }
    return QDir::cleanPath(path);
}

// A password does not belong into a file that everybody may read, and the text itself must not reach a message.
void checkRegistry(const QString& registry)
{
    if (registry.isEmpty()) {
        return;
    }
    const QUrl url(registry, QUrl::StrictMode);
    if (!url.password().isEmpty() || registry.contains(QStringLiteral("password"), Qt::CaseInsensitive)) {
        throw ArchiveError(
            QStringLiteral("Registry of the archive carries a password; put it into PGPASSWORD, ~/.pgpass or the "
                           "file that PGPASSFILE names"));
    }
    if (!url.isValid() || url.scheme() != QLatin1String("postgresql") || url.path().size() < 2) {
        throw ArchiveError(QStringLiteral(
            "Registry of the archive must have the form postgresql://USER@HOST:PORT/DATABASE, or be left out"));
    }
}

std::mutex& processMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::optional<ArchiveConfiguration>& processConfiguration()
{
    static std::optional<ArchiveConfiguration> configuration;
    return configuration;
}

}  // namespace

ArchiveConfiguration checkedConfiguration(const ArchiveConfiguration& configuration)
{
    ArchiveConfiguration checked = configuration;
    checked.directory = absolute(configuration.directory, "Directory");
    checked.storage = absolute(configuration.storage, "Storage");
    if (isInside(checked.storage, checked.directory) || isInside(checked.directory, checked.storage)) {
        throw ArchiveError(QStringLiteral("Directory and Storage of the archive must lie apart: %1, %2")
                               .arg(checked.directory, checked.storage));
    }
    checkRegistry(checked.registry);
    if (checked.station.isEmpty()) {
        checked.station = QSysInfo::machineHostName();
    }
    if (checked.station.isEmpty() || checked.station.contains(QLatin1Char('\n')) ||
        checked.station.contains(QChar(0))) {
        throw ArchiveError(QStringLiteral("Station of the archive must be a name of one line"));
    }
    return checked;
}

ArchiveConfiguration ParseArchiveConfiguration(const QString& text, const QString& fileName)
{
    try {
        const toml::table document = TomlText::parse(text.toStdString());
        const toml::table* table = document["archive"].as_table();
        if (table == nullptr) {
            throw ArchiveError(QStringLiteral("%1 has no table [archive]").arg(fileName));
        }
        const Section section(*table, fileName);
        section.refuseOtherKeys();
        ArchiveConfiguration result;
        result.directory = section.text("Directory");
        result.storage = section.text("Storage");
        result.registry = section.text("Registry");
        result.station = section.text("Station");
        constexpr std::int64_t MostSeconds = 86'400;
        result.cacheBytes = static_cast<std::uint64_t>(section.number(
            "CacheBytes", static_cast<std::int64_t>(result.cacheBytes), std::numeric_limits<std::int64_t>::max()));
        result.fileMode = section.mode("FileMode", result.fileMode);
        result.directoryMode = section.mode("DirectoryMode", result.directoryMode);
        result.removeExpired = section.value<bool>("RemoveExpired", "true or false").value_or(result.removeExpired);
        result.firstPauseMs =
            MillisecondsPerSecond *
            section.number("FirstPauseSeconds", result.firstPauseMs / MillisecondsPerSecond, MostSeconds);
        result.longestPauseMs =
            MillisecondsPerSecond *
            section.number("LongestPauseSeconds", result.longestPauseMs / MillisecondsPerSecond, MostSeconds);
        return checkedConfiguration(result);
    } catch (const TomlText::Error& error) {
        throw ArchiveError(
            QStringLiteral("%1:%2: %3").arg(fileName, QString::number(error.line()), QString::fromUtf8(error.what())));
    }
}

ArchiveConfiguration LoadArchiveConfiguration(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw ArchiveError(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
    }
    return ParseArchiveConfiguration(QString::fromUtf8(file.readAll()), path);
}

std::optional<ArchiveConfiguration> ArchiveConfigurationOfEnvironment()
{
    const QString path = qEnvironmentVariable("ZELVO_CONFIG");
    return path.isEmpty() ? std::nullopt : std::optional(LoadArchiveConfiguration(path));
}

bool ArchiveIsBuiltIn()
{
    return true;
}

void SetProcessArchive(const std::optional<ArchiveConfiguration>& configuration)
{
    std::optional<ArchiveConfiguration> checked;
    if (configuration) {
        checked = checkedConfiguration(*configuration);
    }
    const std::lock_guard guard(processMutex());
    processConfiguration() = std::move(checked);
}

std::optional<ArchiveConfiguration> ProcessArchive()
{
    {
        const std::lock_guard guard(processMutex());
        if (processConfiguration()) {
            return processConfiguration();
        }
    }
    try {
        return ArchiveConfigurationOfEnvironment();
    } catch (const ArchiveError& error) {
        qWarning("%s: no archive is used", error.what());
        return std::nullopt;
    }
}

}  // namespace Zelvo
