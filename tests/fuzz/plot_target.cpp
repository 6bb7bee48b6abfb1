// The pictures of rectool, of a recording of any bytes.
#include <QTemporaryDir>
#if defined(FUZZ_PICTURES)
#include <QApplication>
#endif

#include "hugerange.h"
#include "plot/plot.h"
#include "scratchfile.h"
#include "silence.h"
#include "support/samplerecording.h"
#include "target.h"

#if defined(FUZZ_PICTURES)
// Asked by the leak sanitizer, where there is one: these libraries keep what they have to the end of the process.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libqoffscreen\n";
}
#endif

namespace Fuzzing {

namespace {

// Small, as the time of a picture goes with its size; what is read of the recording is the same.
constexpr int Width = 320;
constexpr int Height = 240;

#if defined(FUZZ_PICTURES)
// One for all pictures: to make it takes longer than to draw.
void beginDrawing()
{
    static int argc = 1;
    static std::string name = "fuzz";
    static char* argv[] = {name.data(), nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const auto* application = new QApplication(argc, argv);  // to the end: Qt's own statics go before it would
    static_cast<void>(application);
}
#else
void beginDrawing()
{
}
#endif

template <typename Options>
void drawn(RecTool::ExitCode (*plot)(const Options&), Options options, const std::string& recording,
           const std::string& picture)
{
    options.files = {recording};
    options.output = picture;
    options.width = Width;
    options.height = Height;
    options.json = true;
    RecTool::ExitCode result = RecTool::ExitCode::CannotRead;
    try {
        result = plot(options);
    } catch (const std::exception& error) {
        require(*error.what() != '\0', "an error says nothing");
    }
    const bool made = std::filesystem::remove(picture);
    require(made || result != RecTool::ExitCode::Fine, "a picture was promised and is not there");
}

std::string written(void (*write)(const std::string&))
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath("seed.rec").toStdString();
    write(path);
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

/// Those of the other readers hold nothing that could be drawn.
std::vector<std::string> plotSeeds()
{
    return {written(writeSampleRecording), written(writePlotRecording),
            written([](const std::string& path) { writeBearingRecording(path, true); })};
}

void runPlot(const std::string& input)
{
    if (mentionsHugeRange(input)) {
        return;
    }
    beginDrawing();
    static const QTemporaryDir folder;
    const std::string picture = folder.filePath("picture.png").toStdString();
    const ScratchFile scratch(input);
    const Silence silence;
    RecTool::PlotSpectrumOptions mean;
    mean.mean = true;
    drawn(RecTool::plotSpectrum, RecTool::PlotSpectrumOptions(), scratch.path(), picture);
    drawn(RecTool::plotSpectrum, mean, scratch.path(), picture);
    drawn(RecTool::plotLevel, RecTool::PlotLevelOptions(), scratch.path(), picture);
    drawn(RecTool::plotBearings, RecTool::PlotBearingsOptions(), scratch.path(), picture);
}

}  // namespace Fuzzing
