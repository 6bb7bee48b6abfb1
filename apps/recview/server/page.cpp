// Files out of the program's resources.
#include "page.h"

#include <map>
#include <string_view>
#include <utility>

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>

static void takePage()
{
    Q_INIT_RESOURCE(page);
}

namespace RecView {

namespace {

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

}  // namespace RecView
