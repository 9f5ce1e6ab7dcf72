#include "LinuxPlatform.h"

#include <VelmoraLinux/Clipboard/PasteboardFactory.h>
#include <VelmoraLinux/Login/LoginItems.h>
#include <VelmoraLinux/Process/WorkingSet.h>
#include <VelmoraLinux/Process/XdgFolders.h>
#include <VelmoraLinux/StatusItem/StatusIconName.h>
#include <VelmoraLinux/Updates/HandoverWatch.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDesktopServices>
#include <QProcessEnvironment>

using namespace Qt::StringLiterals;

namespace {
const QString identifier = u"app.velmora.Velmora"_s;
const QString title = u"Velmora"_s;
const QStringList languages{u"en"_s, u"de"_s}; // Those of the application's texts.

// Where the desktop finds the icon's drawings, if it colours them.
QString iconFolder()
{
    if (!StatusIconName::areColouredBy(qEnvironmentVariable("XDG_CURRENT_DESKTOP")))
        return {};
    return StatusIconName::folder(QCoreApplication::applicationDirPath(), identifier).value_or(QString());
}

} // namespace

LinuxPlatform::LinuxPlatform(ApplicationInstance &instance, ActivationToken &token)
    : instance_(instance)
    , bundle_(QCoreApplication::applicationDirPath())
    , defaults_(XdgFolders::dataHome() + u"/velmora"_s)
    , language_(languages)
    , pasteboard_(makePasteboard(scheduler_))
    , loginItem_(makeLoginItem(identifier, QCoreApplication::applicationFilePath(),
                               QProcessEnvironment::systemEnvironment()))
    , display_(X11Display::open())
    , windows_(display_.get(), token)
    , pointer_(display_.get())
    , screens_(display_.get())
    , panels_(LayerPanels::create(scheduler_))
    , appearance_(QDBusConnection::sessionBus())
    , notifications_(QDBusConnection::sessionBus(), identifier)
    , statusItem_({.bus = QDBusConnection::sessionBus(),
                   .xcb = display_.get(),
                   .screens = panels_ ? panels_->screens() : screens_,
                   .appearance = appearance_,
                   .activationToken = token,
                   .iconFolder = iconFolder(),
                   .locateIcon = iconLocator()},
                  identifier, title)
{
    // An agent whose clipboard has gone for good has nothing left to do.
    pasteboard_->setLostHandler([] { QCoreApplication::quit(); });
    // Plasma's panel up to 5.27 is no layer surface; KWin tells X11 programs of it.
    if (panels_)
        panels_->setFreePart([this] { return screens_.freePart(); });
    // Without its windows it has nothing left to do either.
    if (display_)
        display_->setLostHandler([] { QCoreApplication::quit(); });
}

Platform LinuxPlatform::platform()
{
    const UpdaterFactory makeUpdater = [this](const UpdateConfiguration &configuration,
                                              UpdateUserDriver &driver) {
        return std::make_unique<StandardUpdater>(updaterDependencies(driver), configuration);
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
            .screens = panels_ ? panels_->screens() : screens_,
            .appearance = appearance_,
            .notifications = notifications_,
            .panelSurfaces = panels_.get(),
            .releaseMemory = trimWorkingSet};
}

std::function<void(QPoint, std::function<void(const QRect &)>)> LinuxPlatform::iconLocator()
{
    if (!panels_)
        return {};
    return [this](QPoint hint, std::function<void(const QRect &)> done) {
        panels_->locateIcon(hint, std::move(done));
    };
}

void LinuxPlatform::whenStanding(std::function<void()> done)
{
    statusItem_.whenHostIsKnown(std::move(done));
}

StandardUpdater::Dependencies LinuxPlatform::updaterDependencies(UpdateUserDriver &driver)
{
    const bool lastUpdateFailed = qEnvironmentVariableIsSet(HandoverWatch::failedVariable);
    qunsetenv(HandoverWatch::failedVariable); // Not for the programs that this one starts.
    return {.defaults = defaults_,
            .scheduler = scheduler_,
            .clock = clock_,
            .bundle = bundle_,
            .driver = driver,
            .installation = Installation::detect(QCoreApplication::applicationFilePath(),
                                                 QProcessEnvironment::systemEnvironment()),
            .downloadFolder = XdgFolders::cacheHome() + u"/velmora/updates"_s,
            .network = {.userAgent = title + u'/' + QCoreApplication::applicationVersion()},
            .openPage = [](const QUrl &page) { QDesktopServices::openUrl(page); },
            .quit = [] { QCoreApplication::quit(); },
            .whenStanding = [this](std::function<void()> done) { whenStanding(std::move(done)); },
            .lastUpdateFailed = lastUpdateFailed};
}
