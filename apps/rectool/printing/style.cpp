// Escape sequences for headings, names, good and bad, once they are switched on.
#include "style.h"

namespace RecTool {

namespace {

bool stylesAreUsed = false;

const char* codeOf(Style style)
{
    switch (style) {
        case Style::Heading:
            return "1";
        case Style::Name:
            return "36";
        case Style::Good:
            return "32";
        case Style::Bad:
            return "31";
    }
    return "0";
}

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
    return std::string("\x1b[") + codeOf(style) + 'm' + text + "\x1b[0m";
}

}  // namespace RecTool
