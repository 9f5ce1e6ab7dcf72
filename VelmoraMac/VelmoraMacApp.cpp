#include "VelmoraMacApp.h"

#include <VelmoraMac/StyleKit/AppAssets.h>
#include <VelmoraMac/Telemetry/TelemetryConfig.h>
#include <VelmoraMac/Texts/LocalizedStrings.h>

#include <QAccessible>
#include <QGuiApplication>
#include <QIcon>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

namespace {
constexpr int statusImagePixels = 68;
constexpr std::chrono::seconds startingTime(2); // Memory that only the start needed is released then.

// What has to be set before the first object is made.
const Platform &prepared(const Platform &platform)
{
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setWindowIcon(AppAssets::windowIcon());
    // The same pixels on every machine, without a driver and its memory.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    LocalizedStrings::setSystemLanguage(&platform.language);
    AppAssets::setResourceFolder(platform.bundle.resourceFolder());
    return platform;
}
} // namespace

VelmoraMacApp::VelmoraMacApp(const Platform &platform)
    : platform_(prepared(platform))
    , telemetry_({.defaults = platform.defaults,
                  .https = platform.https,
                  .scheduler = platform.scheduler,
                  .clock = platform.clock,
                  .bundle = platform.bundle,
                  .endpoint = TelemetryConfig::endpointURL(platform.bundle)})
    , views_({.windows = platform.windows,
              .screens = platform.screens,
              .scheduler = platform.scheduler,
              .appearance = platform.appearance,
              .releaseMemory = platform.releaseMemory,
              .surfaces = platform.panelSurfaces})
    , menus_(views_)
    , delegate_(std::make_shared<AppDelegate>(
          platform,
          AppDelegate::Dependencies{
              .telemetry = telemetry_,
              .notifications = notifications_,
              .panels = views_,
              .windows = views_,
              .menus = menus_,
              .statusItemImage = AppAssets::image(u"velmora-menubar-template"_s, statusImagePixels).image,
              .terminate = [] { QCoreApplication::quit(); }}))
{
    views_.setAppState(delegate_->appState());
}

VelmoraMacApp::~VelmoraMacApp()
{
    platform_.instance.setActionHandler({});
    platform_.instance.setReopenHandler({});
    LocalizedStrings::setSystemLanguage(nullptr);
}

int VelmoraMacApp::run()
{
    delegate_->applicationDidFinishLaunching();
    platform_.instance.setReopenHandler([this] { delegate_->applicationShouldHandleReopen(); });
    platform_.instance.setActionHandler(
        [this](ApplicationInstance::Action action) { delegate_->applicationShouldPerform(action); });
    if (actionAtStart_)
        delegate_->applicationShouldPerform(*actionAtStart_);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, qApp, [this] { finish(); });
    // Screen readers learn of the program now. With the first view they would miss the notice that it is.
    QAccessible::setRootObject(qApp);
    platform_.scheduler.after(startingTime, platform_.releaseMemory);
    const int status = QCoreApplication::exec();
    views_.closeAll(); // They use the state, which is destroyed first.
    return status;
}
