// Nothing is held or guarded on Windows: every answer says that all is well.
#include "heldfile.h"

namespace RecStation {

struct HeldFile::Private {};

HeldFile::HeldFile(const QString& /*path*/)
{
}

HeldFile::~HeldFile() = default;

bool HeldFile::isHeld() const
{
    return false;
}

bool HeldFile::isAt(const QString& /*path*/) const
{
    return true;
}

bool HeldFile::isDeleted() const
{
    return false;
}

QString HeldFile::pathNow() const
{
    return {};
}

QString HeldFile::readablePath() const
{
    return {};
}

bool HeldFile::isCut()
{
    return false;
}

struct JournalGuard::Private {};

JournalGuard::JournalGuard(const QString& /*journal*/)
{
}

JournalGuard::~JournalGuard() = default;

bool JournalGuard::isCut()
{
    return false;
}

}  // namespace RecStation
