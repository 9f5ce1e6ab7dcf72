#pragma once

#include "AppDelegate.h"
#include "TelemetryService.h"

#include <VelmoraMac/QuickViews/QuickMenuPresenter.h>
#include <VelmoraMac/QuickViews/QuickViews.h>
#include <VelmoraMac/Shell/NotificationCenter.h>
#include <VelmoraPlatform/Platform.h>

#include <memory>
#include <optional>

// The application on a desktop: makes the objects that exist as long as the process and runs until the user quits.
//
// It starts without a window and does not end when the last one is closed.
class VelmoraMacApp {
public:
    // A QGuiApplication exists; `platform` outlives this object.
    explicit VelmoraMacApp(const Platform &platform);
    ~VelmoraMacApp();
    Q_DISABLE_COPY_MOVE(VelmoraMacApp)

    // What the user started it for; done as soon as it runs.
    void performAtStart(ApplicationInstance::Action action) { actionAtStart_ = action; }

    // What is to be done before the process ends; `run` does it where it returns.
    void finish() { delegate_->applicationShouldTerminate(); }

    // The process's exit status.
    [[nodiscard]] int run();

private:
    Platform platform_;
    NotificationCenter notifications_;
    TelemetryService telemetry_;
    QuickViews views_;
    QuickMenuPresenter menus_;
    std::shared_ptr<AppDelegate> delegate_;
    std::optional<ApplicationInstance::Action> actionAtStart_;
};
