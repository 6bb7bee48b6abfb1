// Stop signals that end every wait for input through a pipe, on POSIX systems.
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>

#include <QFile>
#include <QSocketNotifier>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "hostsystem.h"

namespace recstation {

namespace {

std::atomic<bool> stopRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free, "set in a signal handler");

// The handler writes one byte that nobody takes out: from then on every wait for input ends at once.
std::array<int, 2> wakePipe = {-1, -1};

extern "C" void onStopSignal(int /*signal*/)
{
    const int savedErrno = errno;
    stopRequested = true;
    const char byte = 's';
    [[maybe_unused]] const ssize_t written = write(wakePipe[1], &byte, 1);
    errno = savedErrno;
}

void openWakePipe()
{
    if (pipe2(wakePipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot prepare for signals");
    }
}

void closeWakePipe()
{
    for (int& end : wakePipe) {
        close(end);
        end = -1;
    }
}

void setHandler(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

// Whoever started the process with nohup wants it to outlive the terminal.
bool isIgnored(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

std::function<void()> idleWork;

}  // namespace

IdleWork::IdleWork(std::function<void()> work)
{
    idleWork = std::move(work);
}

IdleWork::~IdleWork()
{
    idleWork = nullptr;
}

struct StopSignal::Private {
    explicit Private(std::function<void()> wakeUp)
        : wake(std::move(wakeUp)), notifier(wakePipe[0], QSocketNotifier::Read)
    {
        QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [this] {
            notifier.setEnabled(false);
            wake();
        });
    }

    std::function<void()> wake;
    QSocketNotifier notifier;
    bool hangUpIgnored = isIgnored(SIGHUP);
};

StopSignal::StopSignal(std::function<void()> wake)
{
    stopRequested = false;
    openWakePipe();
    d = std::make_unique<Private>(std::move(wake));
    setHandler(SIGINT, onStopSignal);
    setHandler(SIGTERM, onStopSignal);
    if (!d->hangUpIgnored) {
        setHandler(SIGHUP, onStopSignal);
    }
    // A reader of the messages that went away must not end a recording.
    setHandler(SIGPIPE, SIG_IGN);
}

StopSignal::~StopSignal()
{
    setHandler(SIGINT, SIG_DFL);
    setHandler(SIGTERM, SIG_DFL);
    if (!d->hangUpIgnored) {
        setHandler(SIGHUP, SIG_DFL);
    }
    d.reset();
    closeWakePipe();
}

bool StopSignal::requested() noexcept
{
    return stopRequested;
}

struct InterruptibleInput::Private {
    int descriptor = -1;
    bool owned = false;
    QString path;

    [[noreturn]] void fail(const char* what) const
    {
        const std::string reason = std::generic_category().message(errno);
        throw std::runtime_error(std::string(what) + " " + path.toStdString() + ": " + reason);
    }

    // False when the process is to stop. Files are always ready.
    [[nodiscard]] bool waitForBytes() const
    {
        std::array<pollfd, 2> waits = {{{descriptor, POLLIN, 0}, {wakePipe[0], POLLIN, 0}}};
        constexpr int idleMs = 250;
        for (;;) {
            const int ready = poll(waits.data(), waits.size(), idleWork ? idleMs : -1);
            if (ready < 0 && errno != EINTR) {
                fail("cannot wait for");
            } else if (ready > 0) {
                return waits[1].revents == 0;
            } else if (ready == 0) {
                idleWork();
            }
        }
    }
};

InterruptibleInput::InterruptibleInput(const QString& path) : d(std::make_unique<Private>())
{
    d->path = path == QLatin1String("-") ? QStringLiteral("the standard input") : path;
    if (path == QLatin1String("-")) {
        d->descriptor = STDIN_FILENO;
        return;
    }
    // A pipe opens without waiting for its writer, so that a signal can end the wait.
    d->descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (d->descriptor < 0) {
        d->fail("cannot open");
    }
    d->owned = true;
}

InterruptibleInput::~InterruptibleInput()
{
    if (d->owned) {
        close(d->descriptor);
    }
}

std::size_t InterruptibleInput::read(char* buffer, std::size_t size)
{
    while (!StopSignal::requested() && d->waitForBytes()) {
        const ssize_t count = ::read(d->descriptor, buffer, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR && errno != EAGAIN) {
            d->fail("cannot read");
        }
    }
    return 0;
}

bool standardErrorIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

void prepareStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF) {
            // Takes the lowest free number, which is this one. Without it the program runs as it was called.
            [[maybe_unused]] const int opened = open("/dev/null", O_RDWR);
        }
    }
}

}  // namespace recstation
