// Recordings that an earlier run left unfinished: found, recovered and put away before new ones begin.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include <QString>
#include <QStringList>

namespace RecStation {

class Messages;

/// What became of one of them.
struct UnfinishedRecording {
    QString path;               ///< where it lay: a .tmp, a .rec whose closing had failed, or a journal alone
    QString recovered;          ///< the new recording; empty when there is none
    bool whole = false;         ///< nothing was lost
    bool byJournal = false;     ///< the journal told the times
    std::uint64_t records = 0;  ///< in the new recording
    std::int64_t bytes = 0;     ///< of the new recording
    QStringList lost;           ///< a clause each: what was lost, and why
    QString movedTo;            ///< where the original is now; empty: where it was
    QString problem;            ///< a sentence: why there is no new recording, or the original was not moved

    /// One sentence for people.
    [[nodiscard]] QString sentence() const;
};

struct UnfinishedHooks {
    std::function<void(const UnfinishedRecording&)> report;  ///< called as each is done with; may be empty
    std::function<bool()> interrupted;                       ///< asked now and then; may be empty
};

/// Recovers what lies unfinished in a directory: each "NAME.tmp" that is a recording, and each "NAME.rec" with a
/// "NAME.tmp.journal" beside it. The originals and their journals go, unchanged, into the folder "recovered" of the
/// directory; what cannot be saved or is in use stays. Other files are left alone. Does not throw: what goes wrong is a
/// recording's problem.
std::vector<UnfinishedRecording> recoverUnfinished(const QString& directory, const UnfinishedHooks& hooks);

/// The same in several directories; also removes what interrupted copies and recoveries left there. Tells of each.
std::vector<UnfinishedRecording> recoverEarlier(const QStringList& directories, Messages& messages);

/// Takes what is whole out of a recording that was closed, and is damaged. What is saved takes its name, the original
/// goes into the folder "recovered" of its directory. Does not throw.
UnfinishedRecording saveDamaged(const QString& closed);

}  // namespace RecStation
