#pragma once

#include <VelmoraMac/Shell/CleaningNotices.h>

#include <QList>

#include <functional>
#include <utility>

// Records every toast; a test agrees to a warning by calling its action.
class RecordingNotices final : public CleaningNotices {
public:
    struct Warning {
        CleaningResult result;
        std::function<void()> cleanAction;
    };

    void show(const CleaningResult &result) override { shown.append(result); }

    void showTrackerWarning(const CleaningResult &result, std::function<void()> cleanAction) override
    {
        warnings.append({result, std::move(cleanAction)});
    }

    QList<CleaningResult> shown;
    QList<Warning> warnings;
};
