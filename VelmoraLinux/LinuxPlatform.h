#pragma once

#include <VelmoraLinux/Appearance/DesktopAppearance.h>
#include <VelmoraLinux/Defaults/SqliteDefaultsStore.h>
#include <VelmoraLinux/Network/QtHttpsClient.h>
#include <VelmoraLinux/Notifications/DBusNotifications.h>
#include <VelmoraLinux/Panels/LayerPanels.h>
#include <VelmoraLinux/Process/BundleInfoFile.h>
#include <VelmoraLinux/Process/EnvironmentLanguage.h>
#include <VelmoraLinux/StatusItem/LinuxStatusItem.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>
#include <VelmoraLinux/Time/SystemWallClock.h>
#include <VelmoraLinux/Updates/StandardUpdater.h>
#include <VelmoraLinux/Windows/ActivationToken.h>
#include <VelmoraLinux/X11/X11Display.h>
#include <VelmoraLinux/X11/X11PointerMonitor.h>
#include <VelmoraLinux/X11/X11WindowManager.h>
#include <VelmoraLinux/X11/X11WorkAreas.h>
#include <VelmoraPlatform/Platform.h>

#include <memory>

// The back ends of a Linux desktop. A QGuiApplication exists as long as this object.
class LinuxPlatform {
public:
    // `instance` is claimed; it stores activation tokens in `token`.
    LinuxPlatform(ApplicationInstance &instance, ActivationToken &token);

    [[nodiscard]] Platform platform();
    // `done` runs once, in the event loop, when the back ends work and the desktop has answered where the
    // icon is shown.
    void whenStanding(std::function<void()> done);

private:
    [[nodiscard]] std::function<void(QPoint, std::function<void(const QRect &)>)> iconLocator();
    [[nodiscard]] StandardUpdater::Dependencies updaterDependencies(UpdateUserDriver &driver);

    ApplicationInstance &instance_;
    BundleInfoFile bundle_;
    SqliteDefaultsStore defaults_;
    EventLoopScheduler scheduler_;
    SystemWallClock clock_;
    EnvironmentLanguage language_;
    QtHttpsClient https_;
    std::unique_ptr<Pasteboard> pasteboard_;
    std::unique_ptr<LoginItem> loginItem_;

    std::unique_ptr<X11Display> display_; // Null without an X server.
    X11WindowManager windows_;
    X11PointerMonitor pointer_;
    X11WorkAreas screens_;
    std::unique_ptr<LayerPanels> panels_; // Null where panels are windows.
    DesktopAppearance appearance_;
    DBusNotifications notifications_;
    LinuxStatusItem statusItem_;
};
