#pragma once

#include <VelmoraPlatform/Pasteboard.h>
#include <VelmoraPlatform/Scheduler.h>

#include <memory>

// Makes the pasteboard of the present session: that of the first back end which can work here, and one that
// reaches nothing where none can. Never null.
[[nodiscard]] std::unique_ptr<Pasteboard> makePasteboard(Scheduler &scheduler);
