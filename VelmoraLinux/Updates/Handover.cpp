#include "Handover.h"

#include "HandoverWatch.h"

#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <csignal>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr std::string_view handoverArgument = "--handover=";
constexpr int receiverSocket = 3; // Any descriptor that a new process does not use.
constexpr auto startTimeout = 20s;
constexpr auto oldProcessTimeout = 30s;
constexpr auto reapDelay = 2s; // After SIGKILL, before the child's exit status is collected.
constexpr size_t maximumMessageBytes = 256;

// Variables that the running AppImage has set for itself: the new one sets its own.
bool belongsToRunningImage(std::string_view variable)
{
    return variable.starts_with("APPIMAGE=") || variable.starts_with("APPDIR=") ||
           variable.starts_with("ARGV0=");
}

pid_t spawn(const QString &program, int socket)
{
    QByteArray path = QFile::encodeName(program);
    QByteArray argument =
        QByteArray(handoverArgument.data(), handoverArgument.size()) + QByteArray::number(receiverSocket);
    const std::array<char *, 3> arguments{path.data(), argument.data(), nullptr};
    std::vector<char *> environment;
    for (char **variable = environ; *variable != nullptr; ++variable) {
        if (!belongsToRunningImage(*variable))
            environment.push_back(*variable);
    }
    environment.push_back(nullptr);

    posix_spawn_file_actions_t files{};
    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, socket, receiverSocket);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t child = 0;
    const int error =
        posix_spawn(&child, path.constData(), &files, &attributes, arguments.data(), environment.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return error == 0 ? child : 0;
}

} // namespace

Handover::Handover(Scheduler &scheduler)
    : scheduler_(scheduler)
    , limit_(scheduler)
{
}

Handover::~Handover()
{
    if (socket_ >= 0)
        close(socket_);
}

void Handover::start(const QString &program, const QString &version, Done done)
{
    done_ = std::move(done);
    expected_ = "ready " + version.toUtf8() + '\n';
    received_.clear();
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0) {
        socket_ = ends[0];
        child_ = spawn(program, ends[1]);
        close(ends[1]);
    }
    limit_.startOver();
    limit_.after(child_ == 0 ? 0s : startTimeout, [this] { finish(UpdateProblem::notStarted); });
    if (child_ == 0)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(socket_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this] { readMessage(); });
}

void Handover::readMessage()
{
    std::array<char, maximumMessageBytes> buffer{};
    const ssize_t size = read(socket_, buffer.data(), buffer.size());
    if (size > 0)
        received_.append(buffer.data(), size);
    if (received_ == expected_)
        finish({});
    else if (size == 0 || (size > 0 && !expected_.startsWith(received_)))
        finish(UpdateProblem::notStarted);
}

void Handover::finish(UpdateOutcome problem)
{
    limit_.startOver();
    if (notifier_) {
        notifier_->setEnabled(false);
        notifier_.release()->deleteLater(); // This may be called by its signal.
    }
    const int socket = std::exchange(socket_, -1);
    accepted_ = !problem ? socket : -1; // Closed by the end of this process.
    if (problem) {
        if (socket >= 0)
            close(socket);
        if (child_ > 0) {
            kill(child_, SIGKILL);
            scheduler_.after(reapDelay, [child = child_] { waitpid(child, nullptr, WNOHANG); });
        }
        child_ = 0;
    }
    std::exchange(done_, nullptr)(problem);
}

std::unique_ptr<HandoverReceiver> HandoverReceiver::fromArguments(int count, const char *const *arguments)
{
    for (int i = 1; i < count; ++i) {
        const std::string_view argument(arguments[i]);
        if (!argument.starts_with(handoverArgument))
            continue;
        const std::string_view digits = argument.substr(handoverArgument.size());
        int socket = -1;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), socket);
        if (error != std::errc() || end != digits.data() + digits.size() || socket <= STDERR_FILENO ||
            fcntl(socket, F_SETFD, FD_CLOEXEC) != 0)
            return nullptr;
        return std::unique_ptr<HandoverReceiver>(new HandoverReceiver(socket));
    }
    return nullptr;
}

HandoverReceiver::~HandoverReceiver()
{
    close(socket_);
}

void HandoverReceiver::takeOver(const QString &version)
{
    const QByteArray message = "ready " + version.toUtf8() + '\n';
    if (send(socket_, message.constData(), static_cast<size_t>(message.size()), MSG_NOSIGNAL) !=
        message.size())
        return;
    pollfd end{socket_, POLLIN, 0};
    poll(&end, 1, static_cast<int>(std::chrono::milliseconds(oldProcessTimeout).count()));
}

void HandoverReceiver::reportStanding() const
{
    const std::string_view message(HandoverWatch::standing);
    (void)send(socket_, message.data(), message.size(), MSG_NOSIGNAL); // Fails when nobody watches.
}
