#include "Progress.h"

#include <unistd.h>

#include <cstdio>

namespace {

constexpr std::chrono::milliseconds patience{1000};
constexpr std::chrono::milliseconds interval{200};
constexpr std::size_t mebibyte = std::size_t{1024} * 1024;

void say(const char *format, std::size_t first, std::size_t second)
{
    static_cast<void>(
        std::fprintf(stderr, format, first, second)); // NOLINT(clang-diagnostic-format-nonliteral)
    static_cast<void>(std::fflush(stderr));
}

} // namespace

Progress::Progress(std::size_t total)
    : total_(total)
    , wanted_(::isatty(STDERR_FILENO) == 1 && ::isatty(STDOUT_FILENO) != 1)
    , next_(Clock::now() + patience)
{
}

Progress::~Progress()
{
    if (shown_)
        static_cast<void>(std::fputs("\r\033[K", stderr));
}

void Progress::advance(std::size_t bytes)
{
    done_ += bytes;
    if (!wanted_ || Clock::now() < next_)
        return;
    next_ = Clock::now() + interval;
    shown_ = true;
    if (total_ >= done_ && total_ != 0)
        say("\r%zu MiB of %zu MiB\033[K", done_ / mebibyte, total_ / mebibyte);
    else
        say("\r%zu MiB\033[K", done_ / mebibyte, 0);
}
