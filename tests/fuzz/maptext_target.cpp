// Recording texts into values: every line of the input is one text, applied one after the other.
#include <values/maps.h>
#include <values/recordingtext.h>
#include <values/valuebase.h>

#include "hugerange.h"
#include "support/documentexamples.h"
#include "target.h"

namespace Fuzzing {

namespace {

std::vector<std::string> linesOf(const std::string& input)
{
    std::vector<std::string> lines;
    for (std::size_t at = 0; at <= input.size();) {
        const std::size_t end = std::min(input.size(), input.find('\n', at));
        lines.push_back(input.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

/// What a value says of its own state, another one must understand, and then say the same.
void comesBack(const values::ValueBase& value)
{
    const std::string state = value.GetObjectStateStringForRecording();
    const auto other = values::MakeValue(values::RecordedKind(state));
    require(other != nullptr, "a value's own text has no kind");
    require(other->ApplyRecordedState(state, 0, true), "a value's own text is not understood");
    require(other->GetObjectStateStringForRecording() == state, "a value's own text reads as another state");
}

void applyAll(values::ValueBase& value, const std::vector<std::string>& lines)
{
    value.CommandRecordingOn();
    for (const std::string& line : lines) {
        if (value.ApplyRecordedState(line, 0, true)) {
            static_cast<void>(value.GetText());
            static_cast<void>(value.GetStringForRecording(true));
            static_cast<void>(value.GetStringForRecording(false));
        }
    }
    comesBack(value);
}

}  // namespace

void runMapText(const std::string& input)
{
    if (mentionsHugeRange(input)) {
        return;
    }
    const std::vector<std::string> lines = linesOf(input);
    values::FastValueMap<values::Bearing, values::BearingHandler> bearings;
    applyAll(bearings, lines);
    values::FastValueMap<float, values::levelHandler> levels;
    applyAll(levels, lines);
    for (const std::string& line : lines) {
        static_cast<void>(values::CarriesChannelRange(line));
        if (const auto value = values::MakeValue(values::RecordedKind(line))) {
            applyAll(*value, lines);
        }
    }
}

std::vector<std::string> mapTextSeeds()
{
    std::vector<std::string> seeds =
        TestSupport::documentExamples(DOCUMENT_FOLDER "/recording-text.md", "recording-text");
    std::string all;
    for (const std::string& seed : seeds) {
        all += seed;
    }
    seeds.push_back(all);
    seeds.emplace_back("34;100000000,25000,3\n7;5|50;1/,,2/\n7;6|51;1,3,4,5,6/\n6;7|134;1,2,3|50;<<<\\\\\\{{{\n");
    return seeds;
}

}  // namespace Fuzzing
