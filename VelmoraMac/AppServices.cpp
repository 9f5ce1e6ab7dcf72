#include "AppServices.h"

AppServices::AppServices(const Platform &platform, TelemetrySink &telemetry, PanelFactory &panels,
                         AppWindowFactory &windows)
    : appState_({.defaults = platform.defaults,
                 .pasteboard = platform.pasteboard,
                 .loginItem = platform.loginItem,
                 .bundle = platform.bundle,
                 .clock = platform.clock,
                 .telemetry = telemetry})
    , notices_(panels, platform.screens, platform.scheduler)
    , clipboardMonitor_(platform.pasteboard, platform.scheduler, notices_)
    , updateWindow_(appState_, windows)
    , updateController_(platform.bundle, [this, &platform](const UpdateConfiguration &configuration) {
        return platform.makeUpdater(configuration, updateWindow_);
    })
{
}
