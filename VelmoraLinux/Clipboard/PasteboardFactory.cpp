#include "PasteboardFactory.h"

#include "X11Pasteboard.h"

#include <utility>

std::unique_ptr<Pasteboard> makePasteboard(Scheduler &scheduler, std::function<void()> lost)
{
    auto pasteboard = X11Pasteboard::create(scheduler);
    if (pasteboard)
        pasteboard->setLostHandler(std::move(lost));
    return pasteboard;
}
