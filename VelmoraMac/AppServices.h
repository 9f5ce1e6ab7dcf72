#pragma once

#include "AppState.h"
#include "CleanToastPresenter.h"
#include "ClipboardMonitor.h"
#include "UpdateController.h"

#include <VelmoraMac/Telemetry/TelemetrySink.h>
#include <VelmoraMac/Updates/UpdateWindow.h>
#include <VelmoraPlatform/Platform.h>

// The objects that exist as long as the process, made in this order.
class AppServices {
public:
    AppServices(const Platform &platform, TelemetrySink &telemetry, PanelFactory &panels,
                AppWindowFactory &windows);

    [[nodiscard]] AppState &appState() { return appState_; }

    [[nodiscard]] CleanToastPresenter &notices() { return notices_; }

    [[nodiscard]] ClipboardMonitor &clipboardMonitor() { return clipboardMonitor_; }

    [[nodiscard]] UpdateController &updateController() { return updateController_; }

private:
    AppState appState_;
    CleanToastPresenter notices_;
    ClipboardMonitor clipboardMonitor_;
    UpdateWindow updateWindow_;
    UpdateController updateController_;
};
