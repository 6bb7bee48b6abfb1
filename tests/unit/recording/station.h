// What the tests of the recorder share: a station without devices, whose clock, tree and configuration they hold.
#pragma once

#include <initializer_list>

#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>
#include <values/value.h>
#include <vkbase/quonos.h>

#include "support/modelreader.h"
#include "support/testing.h"
#include "support/tracelog.h"

namespace RecorderTests {

using Flag = values::Value<bool>;
using Text = values::Value<QString>;
using Number = values::ValueNumeric<double>;
using OffsetNumber = values::ValueNumericWithOffset<double>;
using Selection = values::ValueSelection;
using LevelMap = values::FastValueMap<float, values::levelHandler>;
using BearingMap = values::ValueMap<values::Bearing, values::BearingHandler>;
using FastBearingMap = values::FastValueMap<values::Bearing, values::BearingHandler>;

/// 2018-09-19 12:03:07 UTC in microseconds.
constexpr unsigned long long Noon = 1'537'358'587'000'000ULL;
constexpr unsigned long long Millisecond = 1'000;
constexpr unsigned long long Second = 1'000'000;

/// The station's clock while it exists; it stands until it is set.
class ManualClock final : public IQuonOS {
public:
    ManualClock() { QuonOS::Replace(this); }
    ~ManualClock() override { QuonOS::Replace(nullptr); }
    [[nodiscard]] unsigned long long CurrentTime() const override { return now; }
    void advanceMs(unsigned long long ms) { now += ms * Millisecond; }

    unsigned long long now = Noon;
};

using TestSupport::TraceLog;

/// Hands the changes of a value to a function while it exists. The value must outlive it.
class Listener final : public IObserver {
public:
    using Function = std::function<void(values::ValueBase&, TChangeCode)>;

    Listener(values::ValueBase& value, Function function) : m_value(value), m_function(std::move(function))
    {
        m_value.AddObserver(this);
    }
    ~Listener() override { m_value.RemoveObserver(this); }
    void Update(void* subject, TChangeCode code) override
    {
        m_function(*static_cast<values::ValueBase*>(subject), code);
    }

private:
    values::ValueBase& m_value;
    Function m_function;
};

/// An environment variable for as long as this exists.
class Environment {
public:
    Environment(const char* name, const QByteArray& value);
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment();

private:
    const char* m_name;
    bool m_wasSet;
    QByteArray m_before;
};

/// A station with one value tree and a directory for recordings. Its recorder "Rx" has the value path
/// "/Devices/Rx1" and the status path "/Status/Rx1".
class Station {
public:
    Station();
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;
    ~Station();

    template <typename T>
    T& add(const QString& path)
    {
        auto value = std::make_unique<T>();
        T& added = *value;
        insert(path, std::move(value));
        return added;
    }
    /// A selection with items "NAME", value, key; the first one is selected.
    Selection& addSelection(const QString& path,
                            std::initializer_list<std::tuple<const char*, double, std::int32_t>> items);
    void insert(const QString& path, std::unique_ptr<values::ValueBase> value);

    /// Adds a value of the right kind for each of the 48 keywords, below the recorder's value path.
    void addAllKeywords();

    template <typename T>
    [[nodiscard]] T& value(const QString& path) const
    {
        return dynamic_cast<T&>(*tree.Find(path));
    }
    [[nodiscard]] values::ValueBase& at(const QString& path) const { return *tree.Find(path); }
    [[nodiscard]] QString text(const QString& path) const { return tree.Find(path)->GetText(); }

    [[nodiscard]] QString directory() const { return m_directory.path(); }
    [[nodiscard]] QString file(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] QStringList files() const;  ///< names in the recording directory, sorted
    [[nodiscard]] QString fileName() const { return text("/Status/Rx1/REC_FILENAME"); }

    void configure(const QString& keys, const QString& recordedValues = QString()) const;
    void switchOn(const QString& recorder = "/Devices/Rx1") const;
    void switchOff(const QString& recorder = "/Devices/Rx1") const;

    ManualClock clock;
    values::Tree tree;

private:
    QTemporaryDir m_directory;
};

using TestSupport::ParsedRecording;

/// A closed file, read by a reader that shares no code with the library.
[[nodiscard]] ParsedRecording parsed(const QString& file);
[[nodiscard]] std::vector<ParsedRecording::Record> recordsOf(const ParsedRecording& recording, std::int32_t typeId);
/// The texts of a list of records.
[[nodiscard]] std::vector<std::string> dataOf(const std::vector<ParsedRecording::Record>& records);
/// The records after the initial states.
[[nodiscard]] std::vector<ParsedRecording::Record> changesIn(const ParsedRecording& recording);

}  // namespace RecorderTests
