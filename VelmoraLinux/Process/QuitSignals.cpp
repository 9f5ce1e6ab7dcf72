#include "QuitSignals.h"

#include <QCoreApplication>

#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace {
constexpr std::array quitSignals{SIGTERM, SIGINT, SIGHUP};
// Global because a signal handler has no other access.
int wakeUp = -1; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

void noteSignal(int)
{
    const eventfd_t one = 1;
    [[maybe_unused]] const auto written = ::write(wakeUp, &one, sizeof one);
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
    notifier_.reset();
    ::close(wakeUp);
}
