// The feeds that doc/feed.md shows.
#pragma once

#include <string>
#include <vector>

#include <QFile>
#include <QString>

/// The contents of the document's blocks with the info string ("jsonl", "jsonl bad"), in order.
inline std::vector<std::string> feedExamples(const QString& infoString)
{
    QFile document(QStringLiteral(FEED_DOCUMENT));
    std::vector<std::string> blocks;
    if (!document.open(QIODevice::ReadOnly)) {
        return blocks;
    }
    const QString fence = QStringLiteral("```");
    bool inside = false;
    bool wanted = false;
    while (!document.atEnd()) {
        const QString line = QString::fromUtf8(document.readLine());
        if (line.startsWith(fence)) {
            inside = !inside;
            wanted = inside && line.mid(fence.size()).trimmed() == infoString;
            if (wanted) {
                blocks.emplace_back();
            }
        } else if (wanted) {
            blocks.back() += line.toStdString();
        }
    }
    return blocks;
}
