#include "HandoverWatch.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <string_view>
#include <vector>

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto oldProcessTimeout = 30s;

// What the copy of the process needs, made before the fork: behind it nothing may be allocated, because
// another thread may have held the allocator's lock.
struct Plan {
    int socket;
    int oldProcess; // Reads the end when the old process has ended.
    pid_t successor;
    const Exchange &exchange;
    const char *launcher;
    char **environment;
    std::chrono::milliseconds patience;
};

// False when the time is over.
bool isReadable(int descriptor, Clock::time_point limit)
{
    pollfd wanted{descriptor, POLLIN, 0};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(limit - Clock::now());
        const int ready = poll(&wanted, 1, static_cast<int>(std::max(left, 0ms).count()));
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

void closeAllBut(std::array<int, 4> kept)
{
    std::sort(kept.begin(), kept.end());
    unsigned first = STDERR_FILENO + 1;
    for (const int descriptor : kept) {
        const auto number = static_cast<unsigned>(descriptor);
        if (number > first)
            close_range(first, number - 1, 0);
        first = std::max(first, number + 1);
    }
    close_range(first, ~0U, 0);
}

bool reportsStanding(const Plan &plan)
{
    const std::string_view expected(HandoverWatch::standing);
    std::array<char, 64> buffer{};
    size_t received = 0;
    const auto limit = Clock::now() + plan.patience;
    while (received < expected.size()) {
        if (!isReadable(plan.socket, limit)) {
            kill(plan.successor, SIGKILL); // It hangs. One that has ended has closed the socket.
            return false;
        }
        const ssize_t size = read(plan.socket, buffer.data() + received, buffer.size() - received);
        if (size <= 0)
            return false;
        received += static_cast<size_t>(size);
        if (!expected.starts_with(std::string_view(buffer.data(), std::min(received, expected.size()))))
            return false;
    }
    return true;
}

[[noreturn]] void watch(const Plan &plan)
{
    setsid();
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGPIPE})
        std::signal(signal, SIG_DFL);
    closeAllBut({plan.socket, plan.oldProcess, plan.exchange.parent(), plan.exchange.hidden()});
    (void)isReadable(plan.oldProcess, Clock::now() + oldProcessTimeout);
    shutdown(plan.socket, SHUT_WR);
    if (reportsStanding(plan))
        _exit(EXIT_SUCCESS);
    if (plan.exchange.run()) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): execve does not write to its arguments.
        const std::array<char *, 2> arguments{const_cast<char *>(plan.launcher), nullptr};
        execve(plan.launcher, arguments.data(), plan.environment);
    }
    _exit(EXIT_FAILURE);
}

} // namespace

bool HandoverWatch::start(int socket, pid_t successor, const Exchange &exchange, const QByteArray &launcher,
                          std::chrono::milliseconds patience)
{
    QByteArray failed = QByteArray(failedVariable) + "=1";
    std::vector<char *> environment{failed.data()};
    for (char **variable = environ; *variable != nullptr; ++variable)
        environment.push_back(*variable);
    environment.push_back(nullptr);
    std::array<int, 2> ends{};
    if (!exchange.isOpen() || pipe2(ends.data(), O_CLOEXEC) != 0)
        return false;
    const pid_t copy = fork();
    if (copy == 0)
        watch({socket, ends[0], successor, exchange, launcher.constData(), environment.data(), patience});
    close(ends[0]);
    if (copy < 0) {
        close(ends[1]);
        return false;
    }
    close(socket); // The other end of the pipe stays open until this process has ended.
    return true;
}
