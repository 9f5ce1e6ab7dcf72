#pragma once

#include "Messages.h"

#include <chrono>
#include <cstddef>

// A line on the terminal that says how far long work has come. Says nothing when standard error is no
// terminal, when standard output is one, and in the first second.
class Progress {
public:
    // `total` in bytes; 0 when it is not known.
    Progress(Messages &messages, std::size_t total);

    ~Progress() { messages_.hideProgress(); }

    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void advance(std::size_t bytes);

private:
    using Clock = std::chrono::steady_clock;

    Messages &messages_;
    std::size_t total_;
    std::size_t done_ = 0;
    bool wanted_;
    Clock::time_point next_;
};
