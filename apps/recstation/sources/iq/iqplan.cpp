// Choosing sample format, rate, centre, start and FFTs, or saying what is missing.
#include "sources/iq/iqplan.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include <QDateTime>
#include <QFileInfo>

#include "input/isotime.h"
#include "input/usageerror.h"
#include "sources/iq/sigmf.h"

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
};

Files findFiles(const std::string& file)
{
    const QString name = QString::fromStdString(file);
    if (name == QLatin1String("-")) {
        return {name, QString(), false};
    }
    const QFileInfo info(name);
    const QString stem = info.path() + QLatin1Char('/') + info.completeBaseName();
    const QString metadata = stem + QStringLiteral(".sigmf-meta");
    const QString samples = info.suffix() == QLatin1String("sigmf-meta") ? stem + QStringLiteral(".sigmf-data") : name;
    return {samples, metadata, QFileInfo::exists(metadata)};
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

SampleFormat chooseFormat(const IqOptions& options, const Files& files, const SigMfMetadata& metadata)
{
    const std::string& name = options.format.empty() ? metadata.dataType : options.format;
    const auto format = name.empty()
                            ? sampleFormatBySuffix("." + QFileInfo(files.samples).suffix().toLower().toStdString())
                            : sampleFormatByName(name);
    if (format) {
        return *format;
    }
    if (name.empty()) {
        failUsage("the format of the samples in " + files.samples.toStdString() +
                  " is not known: " + remedy("--format cu8, ci8, ci16_le or cf32_le", files, "core:datatype"));
    }
    failPlan("the sample format \"" + name + "\" is not supported, only cu8, ci8, ci16_le and cf32_le are");
}

double chooseRate(const IqOptions& options, const Files& files, const SigMfMetadata& metadata)
{
    const auto rate = options.rateHz ? options.rateHz : metadata.rateHz;
    if (!rate) {
        failUsage("the sample rate is not known: " + remedy("--rate", files, "core:sample_rate"));
    }
    if (!(*rate > 0 && *rate <= HighestRateHz)) {
        failPlan("the sample rate must be above 0 and at most 1e12 samples a second");
    }
    return *rate;
}

double chooseCentre(const IqOptions& options, const Files& files, const SigMfMetadata& metadata)
{
    const auto centre = options.centreHz ? options.centreHz : metadata.centreHz;
    if (!centre) {
        failUsage("the centre frequency is not known: " + remedy("--centre", files, "core:frequency"));
    }
    if (!(std::abs(*centre) <= HighestCentreHz)) {
        failPlan("the centre frequency must be a number of Hz up to 1e15");
    }
    return *centre;
}

/// "--centre 1090" is more likely a forgotten M than a band that lies half below 0 Hz.
void checkUnitOfCentre(const IqOptions& options, const IqPlan& plan)
{
    if (options.centreHz && !options.centreHasUnit && *options.centreHz != 0 &&
        std::abs(*options.centreHz) < plan.rateHz / 2) {
        const std::string number = QString::number(*options.centreHz, 'g', 12).toStdString();
        failUsage("--centre " + number + " is in Hz, and puts half of the band below 0 Hz: say " + number +
                  "M for MHz, or " + number + "Hz if this is meant");
    }
}

unsigned long long chooseStart(const IqOptions& options, const SigMfMetadata& metadata)
{
    if (!options.start.empty()) {
        const auto time = parseIsoTime(options.start);
        if (!time) {
            failPlan("--start " + options.start + " is not a time such as 2026-11-21T08:30:00.25Z");
        }
        return *time;
    }
    if (metadata.startTime) {
        return *metadata.startTime;
    }
    return static_cast<unsigned long long>(QDateTime::currentMSecsSinceEpoch()) * 1000;
}

void planSpectra(const IqOptions& options, IqPlan& plan)
{
    try {
        static_cast<SpectrumPlan&>(plan) = makeSpectrumPlan(options, plan.rateHz);
    } catch (const std::runtime_error& error) {
        failPlan(error.what());
    }
}

}  // namespace

IqPlan makeIqPlan(const IqOptions& options)
{
    const Files files = findFiles(options.file);
    checkSamplesExist(files);
    SigMfMetadata metadata;
    if (files.hasMetadata) {
        metadata = readSigMf(files.metadata);
    }
    IqPlan plan;
    plan.file = files.samples;
    plan.format = chooseFormat(options, files, metadata);
    plan.rateHz = chooseRate(options, files, metadata);
    plan.centreHz = chooseCentre(options, files, metadata);
    checkUnitOfCentre(options, plan);
    plan.startTime = chooseStart(options, metadata);
    planSpectra(options, plan);
    return plan;
}

}  // namespace RecStation
