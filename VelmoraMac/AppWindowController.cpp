#include "AppWindowController.h"

using namespace Qt::StringLiterals;

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
    const View view{QUrl(u"qrc:/qt/qml/VelmoraMac/SettingsView.qml"_s),
                    {{u"appState"_s, QVariant::fromValue(&appState_)},
                     {u"updateController"_s, QVariant::fromValue(&updateController_)},
                     {u"notifications"_s, QVariant::fromValue(&notifications_)}},
                    {}};
    return windows_.makeWindow(view, {u"Velmora"_s, QSize(660, 640), QSize(640, 610)});
}
