// Making responses, and taking the page's files out of the program's resources.
#include "reply.h"

#include <map>
#include <utility>

#include <QByteArray>
#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QString>

static void takePage()
{
    Q_INIT_RESOURCE(page);
}

namespace RecView {

namespace {

namespace http = boost::beast::http;

constexpr const char* Policy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src 'self'; "
    "frame-ancestors 'none'; base-uri 'none'; form-action 'none'";

// In quotes for programs that know nothing else, and with every byte for the others.
std::string attachment(const std::string& name)
{
    const QString escaped = QString::fromLatin1(QByteArray::fromStdString(name).toPercentEncoding({}, "~"));
    QString simple = escaped;
    simple.replace(QRegularExpression(QStringLiteral("%..")), QStringLiteral("_"));
    return QStringLiteral("attachment; filename=\"%1\"; filename*=UTF-8''%2").arg(simple, escaped).toStdString();
}

const char* typeOf(std::string_view path)
{
    static constexpr std::pair<std::string_view, const char*> Types[] = {
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".json", "application/json"},
        {".txt", "text/plain; charset=utf-8"},
        {".svg", "image/svg+xml"},
        {".png", "image/png"},
    };
    for (const auto& [ending, type] : Types) {
        if (path.ends_with(ending)) {
            return type;
        }
    }
    return "application/octet-stream";
}

std::map<std::string, PageFile> readPage()
{
    takePage();
    const QString root = QStringLiteral(":/page");
    std::map<std::string, PageFile> files;
    for (QDirIterator entries(root, QDir::Files, QDirIterator::Subdirectories); entries.hasNext();) {
        const QString name = entries.next();
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            continue;  // cannot be: it lies in memory
        }
        const QByteArray content = file.readAll();
        const QByteArray hash = QCryptographicHash::hash(content, QCryptographicHash::Sha1).toHex();
        const std::string path = name.mid(root.size()).toStdString();
        files[path] = {content.toStdString(), typeOf(path), '"' + hash.toStdString() + '"'};
    }
    const auto index = files.find("/index.html");
    if (index != files.end()) {
        files["/"] = index->second;
    }
    return files;
}

const std::map<std::string, PageFile>& allFiles()
{
    static const std::map<std::string, PageFile> files = readPage();
    return files;
}

}  // namespace

const PageFile* pageFile(const std::string& path)
{
    const std::map<std::string, PageFile>& files = allFiles();
    const auto found = files.find(path);
    return found == files.end() ? nullptr : &found->second;
}

std::vector<std::string> pageFiles()
{
    std::vector<std::string> paths;
    for (const auto& [path, file] : allFiles()) {
        paths.push_back(path);
    }
    return paths;
}

Reply emptyReply(int status)
{
    constexpr unsigned int Version = 11;
    constexpr int MethodNotAllowed = 405;
    Reply reply(static_cast<http::status>(status), Version);
    reply.set("Content-Security-Policy", Policy);
    reply.set("X-Content-Type-Options", "nosniff");
    reply.set("Referrer-Policy", "no-referrer");
    reply.set("Cross-Origin-Resource-Policy", "same-origin");
    reply.set("Cross-Origin-Opener-Policy", "same-origin");
    reply.set(http::field::cache_control, "no-store");
    if (status == MethodNotAllowed) {
        reply.set(http::field::allow, "GET, HEAD, POST");
    }
    return reply;
}

Reply headOf(const Response& response)
{
    Reply reply = emptyReply(response.status);
    reply.set(http::field::content_type, response.type);
    if (!response.fileName.empty()) {
        reply.set(http::field::content_disposition, attachment(response.fileName));
    }
    return reply;
}

Reply pageReply(const PageFile& file, std::string_view knownTags)
{
    constexpr int Ok = 200;
    constexpr int NotModified = 304;
    const bool isKnown = knownTags.find(file.tag) != std::string_view::npos;
    Reply reply = emptyReply(isKnown ? NotModified : Ok);
    reply.set(http::field::cache_control, "no-cache");
    reply.set(http::field::etag, file.tag);
    reply.set(http::field::content_type, file.type);
    if (!isKnown) {
        reply.body() = file.content;
    }
    return reply;
}

}  // namespace RecView
