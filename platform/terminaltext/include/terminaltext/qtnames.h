// How Qt takes the names of files in a program of ours.
#pragma once

#include <QTextCodec>

namespace TerminalText {

/// File names are UTF-8 whatever the locale says, as the recorder takes them. Windows has them in another way.
inline void takeFileNamesInUtf8()
{
#if !defined(_WIN32)
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
}

}  // namespace TerminalText
