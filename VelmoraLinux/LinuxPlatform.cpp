#include "LinuxPlatform.h"

#include <VelmoraLinux/Clipboard/PasteboardFactory.h>
#include <VelmoraLinux/Login/LoginItems.h>
#include <VelmoraLinux/Process/WorkingSet.h>
#include <VelmoraLinux/Process/XdgFolders.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDesktopServices>
#include <QProcessEnvironment>

namespace {
const QString identifier = QStringLiteral("app.velmora.Velmora");
const QString title = QStringLiteral("Velmora");
} // namespace

LinuxPlatform::LinuxPlatform(ApplicationInstance &instance, ActivationToken &token)
    : instance_(instance)
    , bundle_(QCoreApplication::applicationDirPath())
    , defaults_(XdgFolders::dataHome() + QStringLiteral("/velmora"))
    , pasteboard_(makePasteboard(scheduler_))
    , loginItem_(makeLoginItem(identifier, QCoreApplication::applicationFilePath(),
                               QProcessEnvironment::systemEnvironment()))
    , display_(X11Display::open())
    , windows_(display_.get(), token)
    , pointer_(display_.get())
    , appearance_(QDBusConnection::sessionBus())
    , statusItem_({QDBusConnection::sessionBus(), display_.get(), appearance_, token}, identifier, title)
{
    // An agent whose clipboard has gone for good has nothing left to do.
    pasteboard_->setLostHandler([] { QCoreApplication::quit(); });
}

Platform LinuxPlatform::platform()
{
    const UpdaterFactory makeUpdater = [this](const UpdateConfiguration &configuration,
                                              UpdateUserDriver &driver) {
        return std::make_unique<StandardUpdater>(updaterEnvironment(driver), configuration);
    };
    return {.bundle = bundle_,
            .defaults = defaults_,
            .pasteboard = *pasteboard_,
            .scheduler = scheduler_,
            .clock = clock_,
            .language = language_,
            .https = https_,
            .loginItem = *loginItem_,
            .makeUpdater = makeUpdater,
            .instance = instance_,
            .statusItem = statusItem_,
            .windows = windows_,
            .pointer = pointer_,
            .screens = screens_,
            .appearance = appearance_,
            .releaseMemory = trimWorkingSet};
}

StandardUpdater::Environment LinuxPlatform::updaterEnvironment(UpdateUserDriver &driver)
{
    return {.defaults = defaults_,
            .scheduler = scheduler_,
            .clock = clock_,
            .bundle = bundle_,
            .driver = driver,
            .installation = Installation::detect(QCoreApplication::applicationFilePath(),
                                                 QProcessEnvironment::systemEnvironment()),
            .downloadFolder = XdgFolders::cacheHome() + QStringLiteral("/velmora/updates"),
            .network = {.userAgent = title + QLatin1Char('/') + QCoreApplication::applicationVersion()},
            .openPage = [](const QUrl &page) { QDesktopServices::openUrl(page); },
            .quit = [] { QCoreApplication::quit(); }};
}
