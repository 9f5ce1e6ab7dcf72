#pragma once

#include <VelmoraPlatform/Pasteboard.h>
#include <VelmoraPlatform/Scheduler.h>

#include <functional>
#include <memory>

// Makes the pasteboard of the present session: the first back end that says it can work.
//
// Nothing when there is none. `lost` runs when the session's clipboard has gone away for good.
[[nodiscard]] std::unique_ptr<Pasteboard> makePasteboard(Scheduler &scheduler, std::function<void()> lost);
