#include "QuitSignals.h"

#include <QCoreApplication>

#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <ctime>

namespace {
constexpr std::array quitSignals{SIGTERM, SIGINT, SIGHUP};
// Global because a signal handler has no other access.
int wakeUp = -1; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

// Runs from a signal on; longer than an orderly end takes that waits in vain for a clipboard manager.
timer_t patience = {}; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)
constexpr itimerspec longestEnd = {.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = 230'000'000}};

void noteSignal(int)
{
    const eventfd_t one = 1;
    [[maybe_unused]] const auto written = ::write(wakeUp, &one, sizeof one);
    ::timer_settime(patience, 0, &longestEnd, nullptr);
}

// The event loop is kept busy, or the end takes too long. Nothing is lost: what was set is stored.
void endAtOnce(int)
{
    ::_exit(0);
}
} // namespace

QuitSignals::QuitSignals()
{
    wakeUp = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    notifier_ = std::make_unique<QSocketNotifier>(wakeUp, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [] {
        eventfd_t count = 0;
        ::eventfd_read(wakeUp, &count);
        QCoreApplication::quit();
    });
    sigevent onTime = {};
    onTime.sigev_notify = SIGEV_SIGNAL;
    onTime.sigev_signo = SIGALRM;
    std::signal(SIGALRM, endAtOnce);
    ::timer_create(CLOCK_MONOTONIC, &onTime, &patience);
    for (const int signal : quitSignals) {
        // What was ignored before stays ignored: nohup.
        if (std::signal(signal, noteSignal) == SIG_IGN)
            std::signal(signal, SIG_IGN);
    }
}

QuitSignals::~QuitSignals()
{
    for (const int signal : quitSignals) {
        if (std::signal(signal, SIG_DFL) == SIG_IGN)
            std::signal(signal, SIG_IGN);
    }
    ::timer_delete(patience);
    std::signal(SIGALRM, SIG_DFL);
    notifier_.reset();
    ::close(wakeUp);
}
