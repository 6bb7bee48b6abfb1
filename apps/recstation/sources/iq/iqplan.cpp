// Choosing sample format, rate, centre, start and FFTs, or saying what is missing.
#include "sources/iq/iqsource.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include <QFile>
#include <QFileInfo>

#include "clock.h"
#include "input/badlines.h"
#include "input/byteinput.h"
#include "input/timetext.h"
#include "sources/iq/knownsamples.h"

namespace RecStation {

namespace {

[[noreturn]] void failPlan(const std::string& sentence)
{
    throw std::runtime_error("iq: " + sentence);
}

/// About something that only an option can mend.
[[noreturn]] void failUsage(const std::string& sentence)
{
    throw UsageError("iq: " + sentence);
}

/// The samples and, where there is one, the metadata file beside them. Either of the two may be named.
struct Files {
    QString samples;
    QString metadata;
    bool hasMetadata = false;
    bool wav = false;
};

Files findFiles(const std::string& file)
{
    const QString name = QString::fromStdString(file);
    if (name == QLatin1String("-")) {
        return {name, QString(), false, false};
    }
    const QFileInfo info(name);
    const QString stem = info.path() + QLatin1Char('/') + info.completeBaseName();
    const QString metadata = stem + QStringLiteral(".sigmf-meta");
    const bool hasMetadata = QFileInfo::exists(metadata);
    QString samples = name;
    if (info.suffix() == QLatin1String("sigmf-meta")) {
        samples = hasMetadata ? samplesOfSigMf(name) : stem + QStringLiteral(".sigmf-data");
    }
    const bool wav = isWav(samples);
    return {samples, wav && !hasMetadata ? QString() : metadata, hasMetadata, wav};
}

void checkSamplesExist(const Files& files)
{
    if (files.samples == QLatin1String("-")) {
        return;
    }
    const QFileInfo info(files.samples);
    if (!info.exists()) {
        failPlan("there is no file " + files.samples.toStdString());
    }
    if (info.isDir()) {
        failPlan(files.samples.toStdString() + " is a directory, not a file of samples");
    }
}

/// Where to turn when something is not known.
std::string remedy(const std::string& option, const Files& files, const std::string& key)
{
    if (files.metadata.isEmpty()) {
        return "give " + option;
    }
    return "give " + option + ", or " + key + " in " + files.metadata.toStdString();
}

/// A WAV file says its own format, and its header read as samples would be noise.
void refuseRawWav(const IqOptions& options, const Files& files)
{
    if (files.wav && !options.format.empty()) {
        failUsage(files.samples.toStdString() + " is a WAV file, which tells its own format: leave out --format " +
                  options.format);
    }
    const QString suffix = QFileInfo(files.samples).suffix().toLower();
    if (!files.wav && options.format.empty() && (suffix == QLatin1String("wav") || suffix == QLatin1String("rf64"))) {
        failPlan(files.samples.toStdString() + " is no WAV file: it begins neither with RIFF nor with RF64");
    }
}

/// What cannot be samples, whatever is said of them. A pipe's bytes are looked at when they come.
void refuseForeign(const Files& files)
{
    QFile file(files.samples);
    if (files.wav || !QFileInfo(files.samples).isFile() || !file.open(QIODevice::ReadOnly)) {
        return;
    }
    const std::string why = whyNoSamples(file.read(ForeignBytes).toStdString());
    if (!why.empty()) {
        failPlan(files.samples.toStdString() + " " + why);
    }
    if (QFileInfo(files.samples).suffix().toLower() == QLatin1String("sigmf")) {
        failPlan(files.samples.toStdString() + " is a SigMF archive: unpack it with tar, and name what was in it");
    }
}

SampleFormat chooseFormat(const IqOptions& options, const Files& files, const KnownSamples& known)
{
    const std::string& name = options.format.empty() ? known.format : options.format;
    const auto format = name.empty()
                            ? sampleFormatBySuffix("." + QFileInfo(files.samples).suffix().toLower().toStdString())
                            : sampleFormatByName(name);
    if (format) {
        return *format;
    }
    if (name.empty()) {
        failUsage("the format of the samples in " + inputName(files.samples.toStdString()) +
                  " is not known: " + remedy(std::string("--format ") + SampleFormatNames, files, "core:datatype"));
    }
    failPlan("the sample format \"" + name + "\" is not supported, only " + SampleFormatNames);
}

double chooseRate(const IqOptions& options, const Files& files, const KnownSamples& known)
{
    const auto rate = options.rateHz ? options.rateHz : known.rateHz;
    if (!rate) {
        failUsage("the sample rate is not known: " + remedy("--rate", files, "core:sample_rate"));
    }
    if (!(*rate > 0 && *rate <= HighestRateHz)) {
        failPlan("the sample rate must be above 0 and at most 1e12 samples a second");
    }
    return *rate;
}

double chooseCentre(const IqOptions& options, const Files& files, const KnownCapture& capture)
{
    const auto centre = options.centreHz ? options.centreHz : capture.centreHz;
    if (!centre) {
        failUsage("the centre frequency is not known: " + remedy("--centre", files, "core:frequency"));
    }
    if (!(std::abs(*centre) <= HighestCentreHz)) {
        failPlan("the centre frequency must be a number of Hz up to 1e15");
    }
    return *centre;
}

void checkUnitOfCentre(const IqOptions& options, const IqPlan& plan)
{
    const std::string why = options.centreHz && !options.centreHasUnit
                                ? whyAUnit("--centre", *options.centreHz, plan.rateHz)
                                : std::string();
    if (!why.empty()) {
        failUsage(why);
    }
}

/// Nothing where neither the option nor any capture tells it.
std::optional<unsigned long long> firstStart(const IqOptions& options, const std::vector<KnownCapture>& captures,
                                             const IqPlan& plan)
{
    if (options.startTime) {
        return options.startTime;
    }
    const auto told = std::find_if(captures.begin(), captures.end(),
                                   [](const KnownCapture& capture) { return capture.startTime.has_value(); });
    if (told == captures.end()) {
        return std::nullopt;
    }
    // Nothing says that there was a gap before it.
    const unsigned long long before = plan.timeOf({}, told->firstSample - captures.front().firstSample);
    return *told->startTime - std::min(*told->startTime, before);
}

/// One frequency or time for all captures would be wrong of all but one.
void refuseOneForAll(const IqOptions& options, const Files& files, const std::vector<KnownCapture>& captures)
{
    const auto tells = [&captures](auto member) {
        return std::any_of(captures.begin(), captures.end(),
                           [member](const KnownCapture& capture) { return (capture.*member).has_value(); });
    };
    const auto silent =
        std::find_if(captures.begin(), captures.end(), [](const KnownCapture& capture) { return !capture.centreHz; });
    if (silent != captures.end() && tells(&KnownCapture::centreHz)) {
        failPlan("capture " + std::to_string(silent - captures.begin() + 1) +
                 " tells no centre frequency, and others do: add core:frequency in " + files.metadata.toStdString());
    }
    const std::string all = " would not be true of each of the " + std::to_string(captures.size()) +
                            " captures, which tell their own: leave it out";
    if (captures.size() > 1 && options.centreHz && tells(&KnownCapture::centreHz)) {
        failUsage("--centre" + all);
    }
    if (captures.size() > 1 && options.startTime && tells(&KnownCapture::startTime)) {
        failUsage("--start" + all);
    }
}

void noteWrong(IqPlan& plan, const QString& sentence)
{
    plan.remarks.append(sentence);
    ++plan.bad;
}

/// How many samples the last capture of a file has; what lies beyond the end of the file is told.
void fitToFile(IqPlan& plan, const KnownSamples& known)
{
    const QFileInfo info(plan.file);
    if (plan.file == QLatin1String("-") || !info.isFile() || plan.wav) {
        return;
    }
    const auto size = static_cast<std::uint64_t>(info.size());
    const std::uint64_t end = size - std::min(size, known.trailingBytes);
    for (std::size_t i = 0; i < plan.stretches.size(); ++i) {
        IqStretch& stretch = plan.stretches[i];
        // What is no whole sample is read too, and told then.
        const std::uint64_t bytes = end - std::min(end, stretch.firstByte);
        const std::uint64_t samples = (bytes + sampleBytes(plan.format) - 1) / sampleBytes(plan.format);
        if (plan.stretches.size() > 1 && stretch.samples.value_or(1) > samples) {
            noteWrong(plan, QStringLiteral("capture %1 does not lie whole in the file, which ends at byte %2")
                                .arg(i + 1)
                                .arg(size));
        }
        stretch.samples = std::min(stretch.samples.value_or(samples), samples);
    }
}

void planStretches(const IqOptions& options, const Files& files, const KnownSamples& known, IqPlan& plan)
{
    refuseOneForAll(options, files, known.captures);
    const auto start = firstStart(options, known.captures, plan);
    if (!start && !isStream(options.file)) {
        plan.remarks.append(
            plan.file + QStringLiteral(" tells no time: its first sample gets that of now, unless --start names it"));
    }
    for (const KnownCapture& capture : known.captures) {
        IqStretch stretch{.firstByte = capture.firstByte,
                          .samples = capture.samples,
                          .centreHz = chooseCentre(options, files, capture),
                          .startTime = capture.startTime.value_or(0)};
        if (plan.stretches.empty()) {
            stretch.startTime = start.value_or(wholeMillisecondUs());
        } else if (!capture.startTime) {
            // Nothing says that there was a gap.
            const KnownCapture& before = known.captures[plan.stretches.size() - 1];
            stretch.startTime = plan.timeOf(plan.stretches.back(), capture.firstSample - before.firstSample);
        }
        plan.stretches.push_back(stretch);
    }
    if (known.localTime && !options.startTime) {
        plan.remarks.append(QStringLiteral("the time in the name is read as this computer's local time: it is %1")
                                .arg(QString::fromStdString(utcText(plan.stretches.front().startTime))));
    }
    if (known.captures.front().firstSample > 0) {
        plan.remarks.append(QStringLiteral("the first %1 samples belong to no capture and are left out")
                                .arg(known.captures.front().firstSample));
    }
}

KnownSamples knowWav(const Files& files, IqPlan& plan)
{
    KnownWav wav = readWav(files.samples);
    if (wav.cut) {
        noteWrong(plan, files.samples + QStringLiteral(" is cut off: its header promises more samples"));
    }
    if (wav.neverFinished) {
        plan.remarks.append(files.samples +
                            QStringLiteral(" was never finished: it is read to its end, whatever its header says"));
    }
    if (wav.unknownAuxi) {
        plan.remarks.append(files.samples + QStringLiteral(": what its chunk \"auxi\" says is not understood"));
    }
    return wav.known;
}

/// What others do not tell, where it can be true of all samples.
void addWhatIsMissing(KnownSamples& known, const KnownSamples& more)
{
    KnownCapture& capture = known.captures.front();
    known.rateHz = known.rateHz ? known.rateHz : more.rateHz;
    if (known.captures.size() == 1) {
        known.localTime = more.localTime && !capture.startTime;
        capture.centreHz = capture.centreHz ? capture.centreHz : more.captures.front().centreHz;
        capture.startTime = capture.startTime ? capture.startTime : more.captures.front().startTime;
    }
}

/// Metadata count the samples of a WAV file; where those lie, the file knows itself.
KnownSamples knowWavWithMetadata(const Files& files, const KnownSamples& wav)
{
    KnownSamples known = readSigMf(files.metadata, wav.format);
    const std::uint64_t samples = wav.captures.front().samples.value_or(0);
    for (KnownCapture& capture : known.captures) {
        const std::uint64_t left = samples - std::min(samples, capture.firstSample);
        capture.firstByte = capture.firstSample * sampleBytes(SampleFormat::FloatLe);
        capture.samples = std::min(capture.samples.value_or(left), left);
    }
    addWhatIsMissing(known, wav);
    return known;
}

KnownSamples know(const IqOptions& options, const Files& files, IqPlan& plan)
{
    if (files.wav) {
        const KnownSamples wav = knowWav(files, plan);
        return files.hasMetadata ? knowWavWithMetadata(files, wav) : wav;
    }
    KnownSamples byName = knownByName(QFileInfo(files.samples).completeBaseName());
    if (!files.hasMetadata) {
        return byName;
    }
    KnownSamples known = readSigMf(files.metadata, options.format);
    addWhatIsMissing(known, byName);
    return known;
}

}  // namespace

unsigned long long IqPlan::timeOf(const IqStretch& stretch, std::uint64_t sample) const
{
    constexpr double MicrosecondsPerSecond = 1e6;
    const double sinceStart = static_cast<double>(sample) / rateHz * MicrosecondsPerSecond;
    return stretch.startTime + static_cast<unsigned long long>(std::llround(sinceStart));
}

IqPlan makeIqPlan(const IqOptions& options)
{
    const Files files = findFiles(options.file);
    checkSamplesExist(files);
    refuseRawWav(options, files);
    refuseForeign(files);
    IqPlan plan;
    plan.file = files.samples;
    plan.wav = files.wav;
    const KnownSamples known = know(options, files, plan);
    plan.format = chooseFormat(options, files, known);
    plan.rateHz = chooseRate(options, files, known);
    planStretches(options, files, known, plan);
    checkUnitOfCentre(options, plan);
    fitToFile(plan, known);
    static_cast<SpectrumPlan&>(plan) = makeSpectrumPlan(options, plan.rateHz);
    return plan;
}

}  // namespace RecStation
