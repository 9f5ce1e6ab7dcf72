#pragma once

#include <VelmoraMac/State/CleaningResult.h>

#include <functional>

// The messages of the clipboard pipeline to the user.
class CleaningNotices {
public:
    virtual ~CleaningNotices() = default;
    // Shows that `result` was written to the clipboard.
    virtual void show(const CleaningResult &result) = 0;
    // Offers to write `result`; `cleanAction` is called when the user agrees.
    virtual void showTrackerWarning(const CleaningResult &result, std::function<void()> cleanAction) = 0;
};
