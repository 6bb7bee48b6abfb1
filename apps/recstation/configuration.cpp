// Reading recorder instances from TOML, and refusing what the recorder would only trace.
#include "configuration.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

#include <QDir>

#include <startup/cfgcenter.h>
#include <terminaltext/nearestword.h>

namespace RecStation {

namespace {

constexpr auto View = CfgCenter::View::Instance;

const QString ArchiveTable = QStringLiteral("archive");
const QString StationTableName = QStringLiteral("station");

constexpr std::array KnownKeys = {"ValuePath",     "StatusValuePath",        "RecordingPath", "RecFileNameFormat83",
                                  "MaxFileLength", "FileExpandingSize",      "Values",        "DiskExpandingSize",
                                  "RecordDF",      "RecordingNameLocalTime", "Journal",       "FileMode"};

bool isKnown(const QString& key)
{
    return std::find(KnownKeys.begin(), KnownKeys.end(), key) != KnownKeys.end();
}

// Where a key stands, as messages begin; with nothing known of lines, its file.
struct Place {
    const QString& fileName;
    const KeyLines& lines;

    [[nodiscard]] QString of(const QString& recorder, const QString& key) const
    {
        const auto found = lines.find((recorder + '.' + key).toStdString());
        return fileName + (found == lines.end() ? QString() : ':' + QString::number(found->second)) +
               QStringLiteral(": ");
    }
};

QString meantKey(const QString& key)
{
    return QString::fromStdString(TerminalText::didYouMean(key.toStdString(), {KnownKeys.begin(), KnownKeys.end()}));
}

// The recorder falls back in the same way, oddities included.
void applyFallbacks(Instance& instance)
{
    if (instance.valuePath.isEmpty()) {
        instance.valuePath = QStringLiteral("/Devices/NoName_Driver");
    }
    if (instance.statusValuePath.isEmpty()) {
        instance.valuePath = QStringLiteral("/Devices/RecStatus");
    }
}

// Reads what the recorder will read, so that a wrong type is reported before anything starts.
void checkTypesOfOtherKeys(const ICfg& cfg)
{
    static_cast<void>(cfg.ReadBoolean(QStringLiteral("RecFileNameFormat83"), false));
    static_cast<void>(cfg.ReadInteger(QStringLiteral("MaxFileLength"), 0));
    static_cast<void>(cfg.ReadInteger(QStringLiteral("FileExpandingSize"), 0));
    static_cast<void>(cfg.ReadString(QStringLiteral("DiskExpandingSize"), QString()));
    static_cast<void>(cfg.ReadBoolean(QStringLiteral("RecordingNameLocalTime"), false));
    const std::unique_ptr<ICfg> values(cfg.OpenSection(QStringLiteral("Values"), View));
    if (values == nullptr) {
        return;
    }
    for (std::int32_t i = 0; !values->KeyName(i).isEmpty(); ++i) {
        static_cast<void>(values->ReadString(values->KeyName(i), QString()));
    }
}

[[noreturn]] void refuseValue(const Place& place, const QString& name, const char* key, const char* expected,
                              const QString& found)
{
    const QString sentence = QStringLiteral("key \"%1\" of recorder \"%2\": expected %3, found \"%4\"")
                                 .arg(QLatin1String(key), name, QLatin1String(expected), found);
    throw std::runtime_error((place.of(name, QLatin1String(key)) + sentence).toStdString());
}

// The recorder would keep a journal of its own choice, and only trace it.
void refuseOtherJournals(const ICfg& cfg, const QString& name, const Place& place)
{
    const QString journal = cfg.ReadString(QStringLiteral("Journal"), QStringLiteral("process"));
    if (journal != QLatin1String("process") && journal != QLatin1String("power") && journal != QLatin1String("off")) {
        refuseValue(place, name, "Journal", "\"process\", \"power\" or \"off\"", journal);
    }
}

// The same with permissions.
void refuseOtherFileModes(const ICfg& cfg, const QString& name, const Place& place)
{
    constexpr int Octal = 8;
    constexpr unsigned Everything = 0777;
    constexpr unsigned OwnerReadsAndWrites = 0600;
    const QString text = cfg.ReadString(QStringLiteral("FileMode"), QStringLiteral("0640"));
    bool sound = false;
    const unsigned mode = text.toUInt(&sound, Octal);
    if (!sound || mode > Everything || (mode & OwnerReadsAndWrites) != OwnerReadsAndWrites) {
        refuseValue(place, name, "FileMode",
                    "permissions in octal with which the owner reads and writes, such as \"0640\"", text);
    }
}

Instance readInstance(const QString& name, QStringList& warnings, const Place& place)
{
    const std::unique_ptr<ICfg> cfg(CfgCenter::CreateCfg(name, View, QString()));
    Instance instance;
    instance.name = name;
    instance.valuePath = cfg->ReadString(QStringLiteral("ValuePath"), QString());
    instance.statusValuePath = cfg->ReadString(QStringLiteral("StatusValuePath"), QStringLiteral("/DEVICES/RECSTATUS"));
    instance.recordingPath = cfg->ReadString(QStringLiteral("RecordingPath"), QString());
    instance.directionFinding = cfg->ReadBoolean(QStringLiteral("RecordDF"), false);
    checkTypesOfOtherKeys(*cfg);
    refuseOtherJournals(*cfg, name, place);
    refuseOtherFileModes(*cfg, name, place);
    for (std::int32_t i = 0; !cfg->KeyName(i).isEmpty(); ++i) {
        const QString key = cfg->KeyName(i);
        if (!isKnown(key)) {
            warnings +=
                place.of(name, key) + QStringLiteral("key \"%1\" of recorder \"%2\" means nothing and is ignored%3")
                                          .arg(key, name, meantKey(key));
        }
    }
    applyFallbacks(instance);
    return instance;
}

void refuseSharedPath(const Instance& one, const Instance& other, QString Instance::*path, const char* key,
                      const QString& fileName)
{
    if (one.*path != other.*path) {
        return;
    }
    const QString sentence =
        QStringLiteral(
            "%1: recorders \"%2\" and \"%3\" share the %4 \"%5\"; give each its own, so that their status "
            "values do not mix")
            .arg(fileName, one.name, other.name, QLatin1String(key), one.*path);
    throw std::runtime_error(sentence.toStdString());
}

Configuration check(const QString& fileName, const KeyLines& lines = {})
{
    Configuration configuration;
    for (const QString& name : CfgCenter::InstanceNames()) {
        if (name == ArchiveTable) {
            configuration.archiveFile = fileName;
        } else if (name != StationTableName) {
            configuration.instances.push_back(readInstance(name, configuration.warnings, {fileName, lines}));
        }
    }
    if (configuration.instances.empty()) {
        throw std::runtime_error(fileName.toStdString() +
                                 ": no recorder is configured; a table such as [receiver] "
                                 "makes one");
    }
    for (std::size_t i = 0; i < configuration.instances.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const Instance& one = configuration.instances[j];
            const Instance& other = configuration.instances[i];
            refuseSharedPath(one, other, &Instance::valuePath, "ValuePath", fileName);
            refuseSharedPath(one, other, &Instance::statusValuePath, "StatusValuePath", fileName);
        }
    }
    return configuration;
}

}  // namespace

QString defaultConfigurationText(const QString& recordingPath, const QString& journal)
{
    return QStringLiteral(
               "[receiver]\n"
               "ValuePath = \"/Devices/Rx1\"\n"
               "StatusValuePath = \"/Devices/Rx1Status\"\n"
               "RecordingPath = %1\n"
               "Journal = %2\n"
               "\n"
               "[df]\n"
               "ValuePath = \"/Devices/Df1\"\n"
               "StatusValuePath = \"/Devices/Df1Status\"\n"
               "RecordingPath = %1\n"
               "Journal = %2\n"
               "RecordDF = true\n")
        .arg(QString::fromStdString(tomlString(recordingPath.toStdString())),
             QString::fromStdString(tomlString(journal.toStdString())));
}

QString builtInRecorders(const std::string& journal)
{
    return defaultConfigurationText(QDir::currentPath(),
                                    journal.empty() ? QStringLiteral("process") : QString::fromStdString(journal));
}

Configuration loadConfigurationFile(const QString& path)
{
    CfgCenter::LoadFile(path);
    return check(path);
}

Configuration loadConfigurationText(const QString& text, const QString& fileName, const KeyLines& lines)
{
    CfgCenter::LoadText(text, fileName);
    return check(fileName, lines);
}

const Instance& receiverOf(const Configuration& configuration)
{
    const auto found = std::find_if(configuration.instances.begin(), configuration.instances.end(),
                                    [](const Instance& instance) { return !instance.directionFinding; });
    return found == configuration.instances.end() ? configuration.instances.front() : *found;
}

const Instance& finderOf(Configuration& configuration)
{
    const auto found = std::find_if(configuration.instances.begin(), configuration.instances.end(),
                                    [](const Instance& instance) { return instance.directionFinding; });
    Instance& finder = found == configuration.instances.end() ? configuration.instances.front() : *found;
    finder.directionFinding = true;
    return finder;
}

}  // namespace RecStation
