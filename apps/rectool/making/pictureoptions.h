// What all verbs take that may draw a picture.
#pragma once

#include <string>

#include "replay/recordings.h"

namespace RecTool {

struct PlotOptions : RecordingsOptions {
    std::string output;  ///< path of the picture; its suffix says the format
    int width = 1400;    ///< pixels
    int height = 900;    ///< pixels; where it was not asked for, more if the panels need it
    bool heightIsAsked = false;
    bool json = false;
};

}  // namespace RecTool
