#include "Progress.h"

#include <unistd.h>

#include <string>

namespace {

constexpr std::chrono::milliseconds patience{1000};
constexpr std::chrono::milliseconds interval{200};

std::string mebibytes(std::size_t bytes)
{
    return std::to_string(bytes / (std::size_t{1024} * 1024)) + " MiB";
}

} // namespace

Progress::Progress(Messages &messages, std::size_t total)
    : messages_(messages)
    , total_(total)
    , wanted_(::isatty(STDERR_FILENO) == 1 && ::isatty(STDOUT_FILENO) != 1)
    , next_(Clock::now() + patience)
{
}

void Progress::advance(std::size_t bytes)
{
    done_ += bytes;
    if (!wanted_ || Clock::now() < next_)
        return;
    next_ = Clock::now() + interval;
    const bool knowsTotal = total_ >= done_ && total_ != 0;
    messages_.showProgress(mebibytes(done_) + (knowsTotal ? " of " + mebibytes(total_) : ""));
}
