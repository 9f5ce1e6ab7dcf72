#include "AppWindowController.h"

AppWindowController::AppWindowController(AppState &appState, UpdateController &updateController,
                                         AppWindowFactory &windows, NotificationCenter &notifications)
    : appState_(appState)
    , updateController_(updateController)
    , windows_(windows)
    , notifications_(notifications)
{
}

void AppWindowController::show()
{
    if (!window_) {
        window_ = makeWindow();
        window_->centre();
    }
    window_->bringToFront();
}

std::unique_ptr<AppWindow> AppWindowController::makeWindow()
{
    const View view{QUrl(QStringLiteral("qrc:/qt/qml/VelmoraMac/SettingsView.qml")),
                    {{QStringLiteral("appState"), QVariant::fromValue(&appState_)},
                     {QStringLiteral("updateController"), QVariant::fromValue(&updateController_)},
                     {QStringLiteral("notifications"), QVariant::fromValue(&notifications_)}},
                    {}};
    return windows_.makeWindow(view, {QStringLiteral("Velmora"), QSize(660, 640), QSize(640, 610)});
}
