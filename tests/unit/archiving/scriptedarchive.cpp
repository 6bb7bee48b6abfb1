// The archive client's functions, each of which notes its call and gives the test's answer.
#include "scriptedarchive.h"

using TestSupport::scriptedArchive;
using TestSupport::ScriptedArchive;

namespace TestSupport {

ScriptedArchive& scriptedArchive()
{
    static ScriptedArchive archive;
    return archive;
}

}  // namespace TestSupport

namespace Zelvo {

namespace {

template <typename Result>
Result answer(const QString& call, ZelvoError error, Result result)
{
    scriptedArchive().calls << call;
    scriptedArchive().error = error;
    return result;
}

}  // namespace

ZelvoUrl::ZelvoUrl(const QString& text) : m_text(text)
{
}

bool ZelvoUrl::isZelvoUrl() const
{
    return m_text.startsWith("zelvo:///");
}

const QString& ZelvoUrl::toString() const
{
    return m_text;
}

void ZelvoUrl::clear()
{
    m_text.clear();
}

struct ZelvoClient::Private {};

ZelvoClient::ZelvoClient()
{
    ++scriptedArchive().clients;
    ++scriptedArchive().clientsMade;
}

ZelvoClient::~ZelvoClient()
{
    --scriptedArchive().clients;
}

bool ZelvoClient::IsZelvoAvailable()
{
    return scriptedArchive().available;
}

bool ZelvoClient::IsConnected() const
{
    scriptedArchive().calledWithoutClient += scriptedArchive().clients == 0 ? 1 : 0;
    return scriptedArchive().connected;
}

void ZelvoClient::SetUser(const QString& user)
{
    scriptedArchive().calls << "SetUser " + user;
}

QString ZelvoClient::CreateFileGroup(const QString& version, const QDateTime& expires, const QString& startText,
                                     const QString& description, FileType type, unsigned long long maxBytes,
                                     const QString& title, QString& directory, const QString& reserved)
{
    ScriptedArchive& archive = scriptedArchive();
    const auto number = QString::number(archive.groups.size() + 1);
    const QString guid = archive.guid.isEmpty() ? "GROUP-" + number : archive.guid;
    archive.groups.push_back({version, expires, startText, description, type, maxBytes, title, directory, reserved,
                              guid, QDateTime::currentDateTime()});
    if (!archive.directory.isEmpty()) {
        directory = archive.directory;
    }
    return answer("CreateFileGroup", archive.createError, guid);
}

std::uint32_t ZelvoClient::AddFile(const QString& name, const QString& guid)
{
    static std::uint32_t count = 0;
    ScriptedArchive& archive = scriptedArchive();
    const QString call = "AddFile ";
    count = archive.calls.filter(call).isEmpty() ? 1 : count + 1;
    return answer(call + name + ' ' + guid, archive.addError, archive.fileId == 0 ? count : archive.fileId);
}

QString ZelvoClient::MoveToNas(const QString& guid)
{
    QString text = answer("MoveToNas " + guid, scriptedArchive().moveError, QString());
    if (scriptedArchive().onMove) {
        scriptedArchive().onMove();
    }
    return text;
}

QString ZelvoClient::RequestFile(const ZelvoUrl& url, LockState lock)
{
    const QString call = QString("RequestFile %1 %2").arg(url.toString()).arg(static_cast<int>(lock));
    return answer(call, scriptedArchive().requestError, scriptedArchive().localPath);
}

void ZelvoClient::CloseFile(const ZelvoUrl& url)
{
    answer("CloseFile " + url.toString(), ZelvoError::None, 0);
    if (scriptedArchive().onClose) {
        scriptedArchive().onClose();
    }
}

bool ZelvoClient::IsValidURL(const ZelvoUrl& url) const
{
    scriptedArchive().error = scriptedArchive().urlError;
    return scriptedArchive().urlsAreValid && url.isZelvoUrl();
}

ZelvoError ZelvoClient::GetError() const
{
    return scriptedArchive().error;
}

QString ZelvoClient::GetErrorString() const
{
    return scriptedArchive().error == ZelvoError::None ? QString() : ScriptedArchive::errorText();
}

}  // namespace Zelvo
