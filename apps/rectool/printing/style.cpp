// Escape sequences for headings, names, good and bad, once they are switched on.
#include "style.h"

namespace RecTool {

namespace {

bool stylesAreUsed = false;

}  // namespace

void useStyles(bool on)
{
    stylesAreUsed = on;
}

std::string styled(const std::string& text, Style style)
{
    if (!stylesAreUsed || text.empty()) {
        return text;
    }
    return "\x1b[" + std::to_string(static_cast<int>(style)) + 'm' + text + "\x1b[0m";
}

}  // namespace RecTool
