#pragma once

#include "AppState.h"

#include <VelmoraMac/Shell/CleaningNotices.h>
#include <VelmoraMac/Shell/Panel.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Screens.h>

#include <QObject>

#include <chrono>
#include <memory>

// Shows one notice at a time at the top right of the main screen; a newer one replaces an older one at once.
class CleanToastPresenter final : public CleaningNotices {
public:
    CleanToastPresenter(AppState &appState, PanelFactory &panels, const Screens &screens,
                        Scheduler &scheduler);

    // Passive and short-lived; clicks pass through it.
    void show(const CleaningResult &result) override;
    // Stays longer and offers `cleanAction`, after which no notice is on screen.
    void showTrackerWarning(const CleaningResult &result, std::function<void()> cleanAction) override;

private:
    void present(const View &content, const PanelOptions &options, std::chrono::nanoseconds duration);
    [[nodiscard]] QRect position(QSize size) const;
    void dismiss();

    [[nodiscard]] View toastView(const CleaningResult &result, bool offersCleaning) const;

    AppState &appState_;
    PanelFactory &panels_;
    const Screens &screens_;
    std::unique_ptr<Panel> panel_;
    DelayedSteps expiry_; // Only the latest notice's time may end a notice.
};
