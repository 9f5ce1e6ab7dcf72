#pragma once

#include <VelmoraMac/State/CleaningResult.h>

#include <functional>

// How the clipboard pipeline speaks to the user.
class CleaningNotices {
public:
    virtual ~CleaningNotices() = default;
    // Says that `result` was written to the clipboard.
    virtual void show(const CleaningResult &result) = 0;
    // Offers to write `result`; `cleanAction` does it, if and when the user agrees.
    virtual void showTrackerWarning(const CleaningResult &result, std::function<void()> cleanAction) = 0;
};
