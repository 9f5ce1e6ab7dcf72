#pragma once

#include <VelmoraMac/Shell/CleaningNotices.h>
#include <VelmoraMac/Shell/Panel.h>
#include <VelmoraMac/State/CleaningResult.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Screens.h>

#include <chrono>
#include <memory>
#include <optional>

// Shows one toast at a time at the top right of the main screen; a newer one replaces an older one at once.
class CleanToastPresenter final : public CleaningNotices {
public:
    CleanToastPresenter(PanelFactory &panels, const Screens &screens, Scheduler &scheduler);

    // Short, without buttons; clicks pass through it.
    void show(const CleaningResult &result) override;
    // Stays longer and offers `cleanAction`, after which no toast is on screen: the notice that the accepted result
    // was applied, which comes as soon as the clipboard is taken, is not shown.
    void showTrackerWarning(const CleaningResult &result, std::function<void()> cleanAction) override;
    // Does what the button of the warning on screen does; nothing without one.
    void acceptWarning();

private:
    struct Warning {
        CleaningResult result;
        std::function<void()> cleanAction;
    };

    void accept(const Warning &warning);
    void present(const View &content, const PanelOptions &options, std::chrono::nanoseconds duration);
    [[nodiscard]] QRect position(QSize size) const;
    void dismiss();

    PanelFactory &panels_;
    const Screens &screens_;
    std::unique_ptr<Panel> panel_;
    std::optional<Warning> warning_;         // The one on screen.
    std::optional<CleaningResult> accepted_; // From a warning; its notice is still to come.
    DelayedSteps expiry_;                    // Only the latest toast's time ends a toast.
};
