// Registering recordings and moving them to a storage, against a plain copy of the same bytes that is as lasting: copy
// and hash, flush, read back and hash, rename, flush the directory, delete the original.
#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>

#include <zelvo/archive.h>
#include <zelvo/zelvo.h>

#include <fcntl.h>
#include <unistd.h>

#include "workload.h"

namespace {

constexpr int FilesOfARound = 50;
constexpr std::size_t Piece = 1U << 18U;

void require(bool good, const char* what)
{
    if (!good) {
        throw std::runtime_error(what);
    }
}

/// Folders for recordings and storage, gone afterwards.
class Place {
public:
    Place() : m_root(QString::fromStdString(Bench::file("archive")))
    {
        QDir(m_root).removeRecursively();
        require(QDir().mkpath(recordings()) && QDir().mkpath(storage()), "cannot make folders");
        configuration.directory = QDir(m_root).absoluteFilePath(QStringLiteral("station"));
        configuration.storage = QDir(storage()).absolutePath();
        configuration.station = QStringLiteral("bench");
        Zelvo::SetUpArchive(configuration);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place() { QDir(m_root).removeRecursively(); }

    [[nodiscard]] QString recordings() const { return m_root + QStringLiteral("/recordings"); }
    [[nodiscard]] QString storage() const { return m_root + QStringLiteral("/storage"); }
    [[nodiscard]] static QString name(int number) { return QStringLiteral("%1.rec").arg(number); }
    [[nodiscard]] QString recording(int number) const { return recordings() + QLatin1Char('/') + name(number); }
    void writeRecordings(std::int64_t bytes) const
    {
        for (int i = 0; i < FilesOfARound; ++i) {
            Bench::writeRaw(recording(i).toStdString(), bytes);
        }
        ::sync();
    }

    Zelvo::ArchiveConfiguration configuration;

private:
    QString m_root;
};

void registerFile(Zelvo::ZelvoClient& client, const Place& place, int number)
{
    QString directory = QDir(place.recordings()).absolutePath();
    const QString guid = client.CreateFileGroup(
        QStringLiteral("2"), QDateTime::currentDateTime(), QStringLiteral("now"), QStringLiteral("bench"),
        Zelvo::FileType::Recording, 0, QStringLiteral("bench"), directory, QString());
    client.AddFile(Place::name(number), guid);
    client.MoveToNas(guid);
    require(client.GetError() == Zelvo::ZelvoError::None, "a request failed");
}

QByteArray copyAndHash(const QString& from, int to)
{
    const Bench::Descriptor source = Bench::Descriptor::read(from.toStdString());
    QCryptographicHash hash(QCryptographicHash::Sha256);
    std::vector<char> piece(Piece);
    while (const std::size_t count = source.readSome(piece.data(), piece.size())) {
        hash.addData(piece.data(), static_cast<int>(count));
        require(to < 0 || ::write(to, piece.data(), count) == static_cast<ssize_t>(count), "cannot write");
    }
    return hash.result();
}

void flushDirectory(const QString& path)
{
    const int directory = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    require(directory >= 0 && ::fsync(directory) == 0, "cannot flush a directory");
    ::close(directory);
}

void plainMove(const Place& place, int number)
{
    const QString temporary = place.storage() + QStringLiteral("/copy");
    const int target = ::open(QFile::encodeName(temporary).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    require(target >= 0, "cannot make a file");
    const QByteArray hash = copyAndHash(place.recording(number), target);
    require(::fsync(target) == 0 && ::close(target) == 0, "cannot flush");
    require(copyAndHash(temporary, -1) == hash, "other bytes were read back");
    require(QFile::rename(temporary, place.storage() + QLatin1Char('/') + Place::name(number)), "cannot rename");
    flushDirectory(place.storage());
    require(QFile::remove(place.recording(number)), "cannot remove");
}

template <typename Prepare, typename Work>
void measure(benchmark::State& state, const Prepare& prepare, const Work& work)
{
    for (auto round : state) {
        static_cast<void>(round);
        state.PauseTiming();
        auto place = std::make_unique<Place>();
        prepare(*place);
        state.ResumeTiming();
        work(*place);
        state.PauseTiming();
        place.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * FilesOfARound);
}

void archiveRegister(benchmark::State& state)
{
    measure(
        state, [](const Place& /*place*/) {},
        [](const Place& place) {
            Zelvo::ZelvoClient client(place.configuration);
            for (int i = 0; i < FilesOfARound; ++i) {
                registerFile(client, place, i);
            }
        });
}

void archiveMove(benchmark::State& state)
{
    measure(
        state,
        [&state](const Place& place) {
            Zelvo::ZelvoClient client(place.configuration);
            for (int i = 0; i < FilesOfARound; ++i) {
                registerFile(client, place, i);
            }
            place.writeRecordings(state.range(0));  // what is older than its registration is taken for another file
        },
        [](const Place& place) {
            require(Zelvo::Mover(place.configuration).runPending().moved == FilesOfARound, "not all were moved");
        });
}

void plainCopy(benchmark::State& state)
{
    measure(
        state, [&state](const Place& place) { place.writeRecordings(state.range(0)); },
        [](const Place& place) {
            for (int i = 0; i < FilesOfARound; ++i) {
                plainMove(place, i);
            }
        });
}

BENCHMARK(archiveRegister)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(archiveMove)->Arg(1'000)->Arg(4'000'000)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(plainCopy)->Arg(1'000)->Arg(4'000'000)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
