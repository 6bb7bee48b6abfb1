// plot spectrum: frequency across, time down, the level as a colour.
#include <iostream>
#include <memory>

#include "replay/recordedvalues.h"
#include "spectrumpanel.h"

namespace RecTool {

namespace {

void printSpectra(const PlotSpectrumOptions& options, const PlotSource& source,
                  const std::vector<std::unique_ptr<SpectrumPanel>>& panels)
{
    Json json = pictureJson(options, source);
    json["pixel"] = options.mean ? "mean" : "max";
    json["unit"] = options.unit;
    json["spectra"] = Json::array();
    for (const auto& panel : panels) {
        json["spectra"].push_back(panel->json());
    }
    std::cout << dump(json, 2) << '\n';
}

/// The second pass: a panel for each spectrum, one below the other.
std::vector<std::unique_ptr<SpectrumPanel>> drawSpectra(Picture& picture, PlotSource& source,
                                                        const PlotSpectrumOptions& options,
                                                        const std::vector<Spectrum>& spectra)
{
    std::vector<std::unique_ptr<SpectrumPanel>> panels;
    panels.reserve(spectra.size());
    for (const Spectrum& spectrum : spectra) {
        const auto row = static_cast<int>(panels.size());
        panels.push_back(std::make_unique<SpectrumPanel>(picture, source, options, spectrum, row));
    }
    picture.layOut();
    for (const auto& panel : panels) {
        panel->makeGrids();
    }
    std::vector<RecordedValues> recorded(source.tracks().size());
    source.walk([&](const PlottedRecord& record) {
        for (const auto& panel : panels) {
            if (panel->spectrum().is(record)) {
                panel->update(asLevels(recorded[record.track].apply(record.record)), record.momentMs);
            }
        }
    });
    for (const auto& panel : panels) {
        panel->finish();
    }
    picture.layOut();
    for (const auto& panel : panels) {
        panel->mark();
    }
    return panels;
}

}  // namespace

ExitCode plotSpectrum(const PlotSpectrumOptions& asked)
{
    if (const ExitCode checked = checkPicture(asked); checked != ExitCode::Fine) {
        return checked;
    }
    constexpr int Passes = 2;
    PlotSource source(asked, Passes);
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    std::optional<std::vector<Spectrum>> spectra = wantedSpectra({asked.types, asked.onlyRf, asked.onlyIf}, source);
    if (!spectra) {
        return ExitCode::Usage;
    }
    SpectrumSurvey survey(*spectra, source);
    source.walk([&](const PlottedRecord& record) { survey.visit(record); });
    const std::vector<Spectrum> drawn = survey.finish(source);
    if (drawn.empty()) {
        return source.refuse(noSpectrum(asked, *spectra));
    }
    const std::optional<int> height = heightFor(asked, 2 * drawn.size());
    if (!height) {
        return source.end(ExitCode::Usage);
    }
    PlotSpectrumOptions options = asked;
    options.height = *height;

    const DrawingApplication application;
    Picture picture(options, source, QStringLiteral("Spectrum over time"));
    const std::vector<std::unique_ptr<SpectrumPanel>> panels = drawSpectra(picture, source, options, drawn);
    ExitCode result = picture.save();
    if (result == ExitCode::Fine && options.json) {
        printSpectra(options, source, panels);
    }
    for (const auto& panel : panels) {
        result = withPassedOver(source.file(), panel->spectrum().keyword, "spectra", panel->passedOver(), result);
    }
    return source.end(result);
}

}  // namespace RecTool
