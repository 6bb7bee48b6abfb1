// A source as the program knows it: its name, its help, its options, and how it is made of them.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "configuration.h"
#include "input/badlines.h"
#include "input/byteinput.h"
#include "sources/source.h"

namespace CLI {
class App;
}

namespace RecStation {

/// What a source asks of the station while it runs.
struct StationHooks {
    /// Switches the recorder of the name (empty: the first) on or off; false when there is none of that name.
    std::function<bool(const QString& name, bool on)> switchRecorder;
    /// Learns of a value that was created.
    std::function<void(const QString& path)> created;
    /// The latest time that the recorders were told, microseconds since 1970 UTC; may be empty.
    std::function<unsigned long long()> toldTime;
    /// Whether a recorder that is on records the value.
    std::function<bool(const QString& path)> recorded;
    InputReport report;
};

/// The run that a source is made for.
struct SourceRun {
    Configuration& configuration;
    StationHooks hooks;
    std::optional<unsigned long long> splitGapUs = {};  ///< of an input that plays alone: others could not go back
    bool alone = true;
    bool positionElsewhere = false;  ///< another source tells positions
    bool live = false;               ///< merged by arrival; maps have the time of the step, not one of their own
    bool sourceTime = false;         ///< of a live run: steps have the time that the peer tells
};

struct SourceTraits {
    const char* name;
    const char* description;
    int turn;                        ///< of sources that are due at the same time, the lowest steps first
    bool receives = false;           ///< measures what recorders of a receiver write
    bool findsDirections = false;    ///< measures what recorders of a direction finder write
    bool tellsPositions = false;     ///< which go with whatever is recorded; alone, they are a receiver's
    bool switchesRecorders = false;  ///< by itself
    bool readsAhead = false;         ///< all of its input before the first step, so that no pipe of it is live
    bool live = false;               ///< has a peer that never ends; goes with live ones and pipes only
};

class OfferedSource {
public:
    explicit OfferedSource(const SourceTraits& traits) : m_traits(traits) {}
    OfferedSource(const OfferedSource&) = delete;
    OfferedSource& operator=(const OfferedSource&) = delete;
    virtual ~OfferedSource() = default;

    [[nodiscard]] const SourceTraits& traits() const { return m_traits; }
    /// The options are filled when the command is parsed; until then this must live.
    virtual void addOptions(CLI::App& command) = 0;
    /// The files that are read; "-" is the standard input.
    [[nodiscard]] virtual std::vector<std::string> inputs() const = 0;
    [[nodiscard]] bool readsStandardInput() const { return inputs() == std::vector<std::string>{"-"}; }
    /// Has a peer, or reads nothing but pipes and devices.
    [[nodiscard]] bool isLive() const
    {
        const std::vector<std::string> files = inputs();
        return files.empty() ? m_traits.live
                             : !m_traits.readsAhead && std::all_of(files.begin(), files.end(), isStream);
    }
    [[nodiscard]] virtual std::unique_ptr<Source> make(const SourceRun& run) const = 0;

private:
    SourceTraits m_traits;
};

/// @tparam Options what the command line says, with a member "file" or "files" where there are any
template <typename Options>
class SourceWith final : public OfferedSource {
public:
    using AddOptions = void (*)(CLI::App& command, Options& options);
    using Make = std::unique_ptr<Source> (*)(Options options, const SourceRun& run);

    SourceWith(const SourceTraits& traits, AddOptions add, Make from) : OfferedSource(traits), m_add(add), m_make(from)
    {
    }
    void addOptions(CLI::App& command) override { m_add(command, m_options); }
    [[nodiscard]] std::vector<std::string> inputs() const override
    {
        if constexpr (requires { m_options.file; }) {
            return {m_options.file};
        } else if constexpr (requires { m_options.files; }) {
            return m_options.files;
        } else {
            return {};
        }
    }
    [[nodiscard]] std::unique_ptr<Source> make(const SourceRun& run) const override { return m_make(m_options, run); }
    [[nodiscard]] const Options& options() const { return m_options; }

private:
    Options m_options;
    AddOptions m_add;
    Make m_make;
};

/// The sources of a run, in the order of their turns.
using ChosenSources = std::vector<std::shared_ptr<const OfferedSource>>;

/// All of them, in the order of the help, with their options as they are when nothing was said; the first runs where
/// none is named.
[[nodiscard]] std::vector<std::shared_ptr<OfferedSource>> offeredSources();

}  // namespace RecStation
