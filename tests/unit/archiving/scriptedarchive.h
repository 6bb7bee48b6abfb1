// An archive that answers what a test tells it to and notes every call, after the interface of the archive client.
#pragma once

#include <functional>
#include <vector>

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <zelvo/zelvo.h>

namespace TestSupport {

/// All clients of the process ask this one archive.
struct ScriptedArchive {
    /// The arguments of one CreateFileGroup, in their order, and when it came.
    struct Group {
        QString version;
        QDateTime expires;
        QString startText;
        QString description;
        Zelvo::FileType type;
        unsigned long long maxBytes;
        QString title;
        QString directory;
        QString reserved;
        QString guid;  ///< the answer
        QDateTime at;
    };

    // Answers.
    bool available = true;
    bool connected = true;
    bool urlsAreValid = true;
    QString guid;            ///< of every group; empty: GROUP-1, GROUP-2, ...
    QString directory;       ///< what the directory of a group is replaced by; empty: it is left
    std::uint32_t fileId{};  ///< of every file; 0: 1, 2, ...
    QString localPath;       ///< of a requested file
    Zelvo::ZelvoError createError{};
    Zelvo::ZelvoError addError{};
    Zelvo::ZelvoError moveError{};
    Zelvo::ZelvoError requestError{};
    Zelvo::ZelvoError urlError{};
    std::function<void()> onMove;   ///< runs while MoveToNas is called
    std::function<void()> onClose;  ///< runs while CloseFile is called

    // What came. Queries that change nothing are noted apart.
    QStringList calls;  ///< such as "AddFile a.rec GROUP-1"
    std::vector<Group> groups;
    int clients = 0;  ///< that exist
    int clientsMade = 0;
    int calledWithoutClient = 0;  ///< calls of a client that was gone

    /// The error that the last request left, and its text.
    Zelvo::ZelvoError error{};
    [[nodiscard]] static QString errorText() { return "the archive says no"; }
};

/// The archive of this process; assign a fresh one before each test.
ZELVO_EXPORT ScriptedArchive& scriptedArchive();

}  // namespace TestSupport
