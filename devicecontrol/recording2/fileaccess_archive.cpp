// The archive's part in a recording file. There is no archive yet: a file joins a group only where one is already set.
#include "fileaccess.h"

#include "fileaccess_p.h"
#include "filenames.h"

namespace Recording2 {

QString CFileAccess::getNewGroupGuid(bool reuse)
{
    return reuse ? m_sGuid : QStringLiteral("ERROR");
}

int CFileAccess::addFileToFileGroup(const QString& /*filePath*/, const QString& /*guid*/)
{
    return -1;
}

void CFileAccess::moveToNas(const QString& /*guid*/, int /*fileId*/)
{
}

QString CFileAccess::fullRecordingFilePath() const
{
    return QStringLiteral("%1#zelvo:///%2/%3")
        .arg(FileNames::fromBytes(d->path), m_sGuid, QString::number(d->fileGroupResult));
}

}  // namespace Recording2
