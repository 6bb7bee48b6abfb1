// The values of a station by their keywords, its clock, and the recorder that watches them.
#include "stationrecorder.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>
#include <QString>

#include <recording2/loadinterface.h>
#include <recording2/record/recordtypetable.h>
#include <startup/cfgcenter.h>
#include <terminaltext/nearestword.h>
#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>
#include <values/value.h>
#include <vkbase/quonos.h>
#include <vkbase/vkexception.h>

#include "reading.h"
#include "rectool/printing/text.h"

namespace RecPython {

namespace {

using SpectrumValue = values::FastValueMap<float, values::levelHandler>;
using RecTool::ExitCode;

const QString Folder = QStringLiteral("/Python/");

class GivenClock final : public IQuonOS {
public:
    explicit GivenClock(std::uint64_t us) : now(us) { QuonOS::Replace(this); }
    GivenClock(const GivenClock&) = delete;
    GivenClock& operator=(const GivenClock&) = delete;
    ~GivenClock() override { QuonOS::Replace(nullptr); }
    [[nodiscard]] unsigned long long CurrentTime() const override { return now; }

    unsigned long long now;
};

struct EndRecorder {
    void operator()(IDllInstance* instance) const { VKDestroy(instance); }
};

QString tomlText(const QString& text)
{
    QString quoted = QStringLiteral("\"");
    for (const QChar c : text) {
        quoted += c == QLatin1Char('"') || c == QLatin1Char('\\') ? QLatin1Char('\\') + QString(c)
                  : c < QLatin1Char(' ') || c == QChar(0x7F)
                      ? QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'))
                      : QString(c);
    }
    return quoted + QLatin1Char('"');
}

template <typename Made, typename Plain>
std::unique_ptr<values::ValueBase> makeValue(const Plain& plain)
{
    auto made = std::make_unique<Made>();
    made->SetValue(plain);
    return made;
}

std::unique_ptr<values::ValueBase> makePlain(const PlainValue& value)
{
    if (const auto* flag = std::get_if<bool>(&value)) {
        return makeValue<values::Value<bool>>(*flag);
    }
    if (const auto* number = std::get_if<double>(&value)) {
        return makeValue<values::ValueNumeric<double>>(*number);
    }
    return makeValue<values::Value<QString>>(QString::fromStdString(std::get<std::string>(value)));
}

/// Channels at a step where they are, which takes the recording a few bytes.
values::ChannelRange rangeOf(const std::vector<double>& channelsHz)
{
    if (channelsHz.size() > 1) {
        const double step = (channelsHz.back() - channelsHz.front()) / static_cast<double>(channelsHz.size() - 1);
        auto even = values::ChannelRange::Even(channelsHz.front(), step, channelsHz.size());
        bool isEven = true;
        for (std::size_t i = 0; isEven && i < channelsHz.size(); ++i) {
            isEven = even.frequencyHz(i) == channelsHz[i];
        }
        if (isEven) {
            return even;
        }
    }
    return values::ChannelRange::List(channelsHz);
}

/// The recorder passes over others without a word.
void requireKeyword(const std::string& keyword)
{
    std::vector<std::string> known;
    known.reserve(Recording2::RecordTypeTable.size());
    for (const Recording2::RecordType& type : Recording2::RecordTypeTable) {
        known.emplace_back(type.keyword);
    }
    if (std::find(known.begin(), known.end(), keyword) != known.end()) {
        return;
    }
    const auto nearest = TerminalText::nearestWord(QString::fromStdString(keyword).toUpper().toStdString(), known);
    throw Refusal(ExitCode::Usage, {},
                  "The recorder knows no keyword \"" + RecTool::oneLine(keyword) + "\"." +
                      (nearest ? " Did you mean " + *nearest + '?' : ""));
}

}  // namespace

class StationRecorder::Station {
public:
    explicit Station(const StationOptions& options) : m_clock(options.startUs)
    {
        add(QStringLiteral("DEVICENAME"), makePlain(options.device));
        add(QStringLiteral("DEVICETYPE"), makePlain(options.deviceType));
        if (!options.caption.empty()) {
            add(QStringLiteral("DEVICE_CAPTION"), makePlain(options.caption));
        }
        for (const auto& [keyword, value] : options.values) {
            requireKeyword(keyword);
            add(QString::fromStdString(keyword), makePlain(value));
        }
        for (const auto& [keyword, channelsHz] : options.spectra) {
            requireKeyword(keyword);
            auto map = std::make_unique<SpectrumValue>();
            map->SetChannelRange(rangeOf(channelsHz));
            add(QString::fromStdString(keyword), std::move(map));
        }
        CfgCenter::LoadText(
            QStringLiteral("[Rx]\nValuePath = \"/Python\"\nStatusValuePath = \"/Python\"\nRecordingPath = %1\n"
                           "Journal = %2\n[Rx.Values]\n%3")
                .arg(tomlText(QDir(QString::fromStdString(options.folder)).absolutePath()),
                     tomlText(QString::fromStdString(options.journal)), m_table),
            QStringLiteral("the recorder's configuration"));
        m_recorder.reset(VKCreate(L"Rx"));
        m_observer = dynamic_cast<IObserver*>(m_recorder.get());
        status().Select(QStringLiteral("On"));
    }
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;
    ~Station()
    {
        m_recorder.reset();
        CfgCenter::Clear();
    }

    void stop() const { status().Select(QStringLiteral("Off")); }
    [[nodiscard]] bool isRecording() const { return status().GetCurrentKey() == 1; }
    [[nodiscard]] QString file() const
    {
        const values::ValueBase* const name = m_tree.Find(Folder + QStringLiteral("REC_FILENAME"));
        return name == nullptr ? QString() : name->GetText();
    }
    /// Plain values have no time of their own: the recorder is told the clock's.
    void goTo(std::uint64_t timeUs)
    {
        m_clock.now = timeUs;
        m_time.SetCells(0, {}, timeUs);
        m_observer->Update(static_cast<values::ValueBase*>(&m_time), TChangeCode::ValueChanged);
    }
    template <typename T>
    [[nodiscard]] T& value(const std::string& keyword, const char* kind) const
    {
        values::ValueBase* const found = m_tree.Find(Folder + QString::fromStdString(keyword));
        if (found == nullptr) {
            throw Refusal(ExitCode::Usage, {},
                          "The recorder was not given a value " + RecTool::oneLine(keyword) + " when it began.");
        }
        auto* const typed = dynamic_cast<T*>(found);
        if (typed == nullptr) {
            throw Refusal(ExitCode::Usage, {}, RecTool::oneLine(keyword) + " did not begin as " + kind + '.');
        }
        return *typed;
    }

private:
    void add(const QString& keyword, std::unique_ptr<values::ValueBase> value)
    {
        value->SetName(keyword);
        m_tree.Insert(Folder, value.get());
        static_cast<void>(value.release());  // the tree's now
        m_table += QStringLiteral("%1 = %2\n").arg(keyword, tomlText(Folder + keyword));
    }
    [[nodiscard]] values::ValueSelection& status() const
    {
        return dynamic_cast<values::ValueSelection&>(*m_tree.Find(Folder + QStringLiteral("REC_STATUS")));
    }

    GivenClock m_clock;
    values::Tree m_tree;
    QString m_table;
    SpectrumValue m_time;
    std::unique_ptr<IDllInstance, EndRecorder> m_recorder;
    IObserver* m_observer = nullptr;
};

StationRecorder::StationRecorder(const StationOptions& options) : m_nowUs(options.startUs)
{
    if (values::Tree::Instance() != nullptr) {
        throw Refusal(ExitCode::Usage, {}, "Another recorder of this process is at work: close it first.");
    }
    try {
        m_station = std::make_unique<Station>(options);
        m_station->goTo(m_nowUs);  // the start of the recording
    } catch (const VKException& error) {
        m_station.reset();
        throw Refusal(ExitCode::CannotRead, options.folder, error.what());
    }
    noteFile();
    if (m_files.empty() ||
        !QFileInfo::exists(QString::fromStdString(m_files.back()))) {  // the recorder goes on all the same
        m_station->stop();
        m_station.reset();
        throw Refusal(ExitCode::CannotRead, options.folder,
                      "The recording could not begin: no file can be made there.");
    }
}

StationRecorder::~StationRecorder()
{
    if (m_station == nullptr) {
        return;
    }
    try {
        m_station->stop();
    } catch (const std::exception&) {  // nobody is there to be told; the recorder has traced it, and the file is left
        m_station.reset();
    }
}

void StationRecorder::requireThread() const
{
    if (m_station == nullptr) {
        throw Refusal(ExitCode::Usage, {}, "The recorder is closed.");
    }
    if (std::this_thread::get_id() != m_thread) {
        throw Refusal(ExitCode::Usage, {}, "A recorder is used by the thread that made it.");
    }
}

void StationRecorder::goTo(std::uint64_t timeUs)
{
    if (timeUs < m_nowUs) {
        throw Refusal(ExitCode::Usage, {}, "Time does not go back in a recording: this is before the change before.");
    }
    m_nowUs = timeUs;
    m_station->goTo(timeUs);
}

void StationRecorder::set(const std::string& keyword, const PlainValue& value, std::uint64_t timeUs)
{
    requireThread();
    if (const auto* flag = std::get_if<bool>(&value)) {
        auto& target = m_station->value<values::Value<bool>>(keyword, "a bool");
        goTo(timeUs);
        target.SetValue(*flag);
    } else if (const auto* number = std::get_if<double>(&value)) {
        auto& target = m_station->value<values::ValueNumeric<double>>(keyword, "a number");
        goTo(timeUs);
        target.SetValue(*number);
    } else {
        auto& target = m_station->value<values::Value<QString>>(keyword, "a text");
        goTo(timeUs);
        target.SetValue(QString::fromStdString(std::get<std::string>(value)));
    }
    afterChange();
}

void StationRecorder::setChannels(const std::string& keyword, const std::vector<double>& channelsHz,
                                  std::uint64_t timeUs)
{
    requireThread();
    auto& map = m_station->value<SpectrumValue>(keyword, "a spectrum");
    goTo(timeUs);
    try {
        map.SetChannelRange(rangeOf(channelsHz));
    } catch (const VKException& error) {
        throw Refusal(ExitCode::Usage, {}, error.what());
    }
    afterChange();
}

void StationRecorder::setLevels(const std::string& keyword, std::size_t first, std::span<const float> levels,
                                std::uint64_t timeUs)
{
    requireThread();
    auto& map = m_station->value<SpectrumValue>(keyword, "a spectrum");
    if (first > map.size() || levels.size() > map.size() - first) {
        throw Refusal(ExitCode::Usage, {},
                      RecTool::oneLine(keyword) + " has " + RecTool::counted(map.size(), "channel") + ": " +
                          RecTool::counted(levels.size(), "level") + " from channel " + std::to_string(first) +
                          " on do not fit.");
    }
    goTo(timeUs);
    map.SetCells(first, levels, timeUs);
    afterChange();
}

void StationRecorder::noteFile()
{
    const QString file = m_station->file();
    const std::string name = file.toStdString();
    if (file.endsWith(QStringLiteral(".tmp")) && (m_files.empty() || m_files.back() != name)) {
        m_files.push_back(name);
    }
}

void StationRecorder::afterChange()
{
    noteFile();
    if (!m_station->isRecording()) {
        close();
        throw Refusal(ExitCode::CannotRead, m_files.back(),
                      "Writing failed, and the recording was closed with what was accepted; is the disk full?");
    }
}

void StationRecorder::close()
{
    if (m_station == nullptr) {
        return;
    }
    requireThread();
    m_station->stop();
    m_station.reset();
    for (std::string& file : m_files) {  // each was given its final name, unless somebody took that
        const QString temporary = QString::fromStdString(file);
        const QString finished = temporary.left(temporary.size() - 4) + QStringLiteral(".rec");
        if (!QFileInfo::exists(temporary) && QFileInfo::exists(finished)) {
            file = finished.toStdString();
        }
    }
}

}  // namespace RecPython
