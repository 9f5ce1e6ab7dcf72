#include "AppWindowController.h"

using namespace Qt::StringLiterals;

AppWindowController::AppWindowController(UpdateController &updateController, AppWindowFactory &windows,
                                         NotificationCenter &notifications)
    : updateController_(updateController)
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
                    {{u"updateController"_s, QVariant::fromValue(&updateController_)},
                     {u"notifications"_s, QVariant::fromValue(&notifications_)}},
                    {}};
    return windows_.makeWindow(
        view, {.title = u"Velmora"_s, .contentSize = QSize(660, 640), .minimumSize = QSize(640, 610)});
}
