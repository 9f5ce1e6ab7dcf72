#include "TemporaryName.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace temporaryName {

namespace {

// What a signal handler may look at. An empty name stands for none.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): a handler gets nothing passed in.
std::array<char, PATH_MAX> name{};

extern "C" void removeAndEnd(int signal)
{
    if (name.front() != '\0')
        ::unlink(name.data());
    // The handler was for once: the signal now ends the program as it would have without it.
    static_cast<void>(std::raise(signal));
}

void watchSignals()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction before = {};
        if (::sigaction(signal, nullptr, &before) != 0 || before.sa_handler != SIG_DFL)
            continue; // Ignored, as nohup does: so it stays.
        struct sigaction action = {};
        action.sa_handler = removeAndEnd;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        static_cast<void>(::sigaction(signal, &action, nullptr));
    }
}

} // namespace

int create(const std::string &folder)
{
    const std::string pattern = folder + "/.velmora-clean-XXXXXX";
    if (pattern.size() >= name.size()) {
        errno = ENAMETOOLONG;
        return -1;
    }
    watchSignals();
    std::memcpy(name.data() + 1, pattern.data() + 1, pattern.size());
    name.front() = pattern.front();
    const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0)
        forget();
    return descriptor;
}

const char *get()
{
    return name.data();
}

void forget()
{
    name.front() = '\0';
}

} // namespace temporaryName
