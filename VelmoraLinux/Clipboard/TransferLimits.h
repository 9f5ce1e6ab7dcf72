#pragma once

#include <chrono>
#include <cstddef>

// How long and how much the clipboard's owner may take to hand over its text.
struct TransferLimits {
    std::chrono::nanoseconds silence = std::chrono::seconds(5); // Without any sign of progress.
    std::chrono::nanoseconds total = std::chrono::seconds(15);
    std::size_t bytes = std::size_t(64) * 1024 * 1024;
};
