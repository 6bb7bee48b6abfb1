// Which file on the disk a registration is about: names can come again, files do not. Kept in the station's journal
// only.
#pragma once

#include <vector>

#include <QString>

#include "database.h"
#include "storage/names.h"

namespace Zelvo {

/// What was seen of a file when it was registered.
struct Origin {
    QString file;            ///< FileIdentity::lasting(); empty: there was none to be seen
    bool journaled = false;  ///< its journal lay beside it
};

/// What both parts of an address are called in every table.
[[nodiscard]] Values keyOf(const Address& address);

/// Used by one thread. Everything throws ArchiveError when the journal does not answer.
class Origins {
public:
    explicit Origins(Database& journal) : m_journal(journal) {}

    void note(const Address& address, const Origin& origin);
    [[nodiscard]] Origin of(const Address& address);
    /// Whoever had this address open for writing may have put another file in the place of the first.
    void change(const Address& address, const QString& file);
    /// The file is deleted: the system may give its number to another one.
    void forget(const Address& address);
    /// Whether the file belongs to another address.
    [[nodiscard]] bool isAnothers(const QString& file, const Address& address);
    /// The other addresses of the same file, deleted or not.
    [[nodiscard]] std::vector<Address> sharing(const Address& address);
    /// Under which of the addresses of its file it was first registered; the address itself once the file is deleted.
    [[nodiscard]] Address firstOf(const Address& address);
    /// The recorders that registered the file; empty for one that is not registered.
    [[nodiscard]] std::vector<QString> owners(const QString& file);

private:
    Database& m_journal;
};

}  // namespace Zelvo
