#include "SuddenEnd.h"

#include <cstdlib>
#include <utility>

namespace {

// Global because a function that runs at the exit has no other access.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
std::function<void()> lastStep;

void runLastStep()
{
    if (const auto step = std::exchange(lastStep, nullptr)) {
        step();
        std::_Exit(EXIT_SUCCESS);
    }
}

} // namespace

SuddenEnd::SuddenEnd(std::function<void()> step)
{
    lastStep = std::move(step);
    (void)std::atexit(runLastStep);
}

SuddenEnd::~SuddenEnd()
{
    lastStep = nullptr;
}
