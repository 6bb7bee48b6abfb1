// Reading a recorder's configuration, key by key.
#include "recorderconfiguration.h"

#include <cstdlib>
#include <memory>
#include <string>

#include <QDir>

#include <startup/cfgcenter.h>

#include "../filenames.h"
#include "../traces.h"

namespace Recording2 {

namespace {

const QString DefaultValuePath = QStringLiteral("/Devices/NoName_Driver");
const QString DefaultStatusValuePath = QStringLiteral("/Devices/RecStatus");

// Leading digits with white space and a sign in front, as the C library converts them; 0 without any.
std::int64_t leadingNumber(const QString& text)
{
    const std::string bytes = text.toStdString();
    const char* begin = bytes.c_str();
    return std::strtoll(begin, nullptr, 10);
}

}  // namespace

void RecorderConfiguration::useNone()
{
    valuePath = DefaultValuePath;
    statusValuePath = DefaultStatusValuePath;
}

void RecorderConfiguration::read(const ICfg& cfg)
{
    *this = RecorderConfiguration();  // what was read before
    valuePath = cfg.ReadString(QStringLiteral("ValuePath"), QString());
    statusValuePath = cfg.ReadString(QStringLiteral("StatusValuePath"), QStringLiteral("/DEVICES/RECSTATUS"));
    readRecordingPath(cfg);
    fileNameFormat83 = cfg.ReadBoolean(QStringLiteral("RecFileNameFormat83"), false);
    maxFileLength = cfg.ReadInteger(QStringLiteral("MaxFileLength"), 10'000'000);
    fileExpandingSize = cfg.ReadInteger(QStringLiteral("FileExpandingSize"), 9'000'000);
    diskExpandingSize = leadingNumber(cfg.ReadString(QStringLiteral("DiskExpandingSize"), QStringLiteral("100000000")));
    readJournalMode(cfg);
    readFileMode(cfg);
    const std::unique_ptr<ICfg> section(cfg.OpenSection(QStringLiteral("Values"), CfgCenter::View::Instance));
    if (section != nullptr) {
        readValues(*section);
    }
}

// An empty path is the current directory, which useDefaultPaths names.
void RecorderConfiguration::readRecordingPath(const ICfg& cfg)
{
    recordingPath = cfg.ReadString(QStringLiteral("RecordingPath"), FileNames::defaultDirectory());
    if (!recordingPath.isEmpty() && !FileNames::isDirectory(FileNames::toBytes(recordingPath))) {
        Traces::tell(Traces::Recorder,
                     QStringLiteral("CRecording::Init() - Cannot find the <%1> directory, set it to <%2>")
                         .arg(recordingPath, FileNames::defaultDirectory()),
                     212);
        recordingPath = FileNames::defaultDirectory();
    }
}

void RecorderConfiguration::readJournalMode(const ICfg& cfg)
{
    const QString text = cfg.ReadString(QStringLiteral("Journal"), QStringLiteral("process"));
    if (text == QLatin1String("off")) {
        journal = JournalMode::Off;
    } else if (text == QLatin1String("power")) {
        journal = JournalMode::Power;
    } else if (text != QLatin1String("process")) {
        Traces::tell(
            Traces::Recorder,
            QStringLiteral("CRecording::Init() - Journal is <%1>, not process, power or off; set it to <process>")
                .arg(text),
            __LINE__);
    }
}

void RecorderConfiguration::readFileMode(const ICfg& cfg)
{
    constexpr int Octal = 8;
    constexpr System::FileMode Everything = 0777;
    constexpr System::FileMode OwnerReadsAndWrites = 0600;
    const QString text = cfg.ReadString(QStringLiteral("FileMode"), QStringLiteral("0640"));
    bool sound = false;
    const System::FileMode mode = text.toUInt(&sound, Octal);
    if (sound && mode <= Everything && (mode & OwnerReadsAndWrites) == OwnerReadsAndWrites) {
        fileMode = mode;
    } else {
        Traces::tell(
            Traces::Recorder,
            QStringLiteral("CRecording::Init() - FileMode is <%1>, no permissions in octal with which the owner reads "
                           "and writes; set it to <0640>")
                .arg(text),
            __LINE__);
    }
}

void RecorderConfiguration::readValues(const ICfg& section)
{
    values.emplace();
    for (std::int32_t i = 0;; ++i) {
        const QString key = section.KeyName(i);
        if (key.isEmpty()) {
            return;
        }
        const QString path = section.ReadString(key, QString());
        if (!path.isEmpty()) {
            values->emplace_back(key.toUpper(), path);
        }
    }
}

void RecorderConfiguration::useDefaultPaths()
{
    if (valuePath.isEmpty()) {
        valuePath = DefaultValuePath;
    }
    // An empty status path moves the value path and stays empty itself: stations are set up around this.
    if (statusValuePath.isEmpty()) {
        valuePath = DefaultStatusValuePath;
    }
    if (recordingPath.isEmpty()) {
        recordingPath = QDir::currentPath();
    }
}

}  // namespace Recording2
