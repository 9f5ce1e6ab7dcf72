#include "DisplaySystem.h"

#include "PluginFolders.h"

#include <VelmoraLinux/Wayland/WaylandConnection.h>
#include <VelmoraLinux/X11/XcbServer.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <future>
#include <string_view>
#include <thread>

namespace {

constexpr auto patience = std::chrono::seconds(3);
constexpr auto platformVariable = "QT_QPA_PLATFORM";

// A server that accepts a connection and then says nothing would keep us waiting for ever.
bool answersX11()
{
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return false;
    std::promise<bool> promise;
    std::future<bool> answer = promise.get_future();
    std::thread([display, promise = std::move(promise)]() mutable {
        promise.set_value(connectToXServer(display.constData()) != nullptr);
    }).detach();
    return answer.wait_for(patience) == std::future_status::ready && answer.get();
}

bool answersWayland()
{
    const auto connection = WaylandConnection::open();
    return connection && connection->roundTrip(patience);
}

// Not every system installs it along with Qt.
bool hasWaylandPlugin()
{
    const QFileInfo program(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")));
    QStringList folders = pluginFolders(program.path());
    std::transform(folders.begin(), folders.end(), folders.begin(),
                   [](const QString &folder) { return folder + QStringLiteral("/platforms"); });
    folders +=
        qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    return std::any_of(folders.begin(), folders.end(), [](const QString &folder) {
        return !QDir(folder).entryList({QStringLiteral("libqwayland*.so")}).isEmpty();
    });
}

// The platforms that the user asks for, in order; empty without a choice.
QByteArray userChoice(int argc, char **argv)
{
    QByteArray choice = qgetenv(platformVariable);
    for (int i = 1; i + 1 < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "-platform" || argument == "--platform")
            choice = argv[i + 1];
    }
    return choice;
}

bool isUsable(const QByteArray &platform)
{
    if (platform.startsWith("xcb"))
        return answersX11();
    if (platform.startsWith("wayland"))
        return answersWayland() && hasWaylandPlugin();
    return true; // Such as "offscreen", which needs nothing.
}

void complain()
{
    const QByteArray display = qgetenv("DISPLAY");
    const QByteArray wayland = qgetenv("WAYLAND_DISPLAY");
    if (display.isEmpty() && wayland.isEmpty())
        std::fputs("velmora: there is no desktop here: neither DISPLAY nor WAYLAND_DISPLAY is set.\n",
                   stderr);
    else if (wayland.isEmpty())
        std::fprintf(stderr, "velmora: the display %s cannot be reached.\n", display.constData());
    else if (!answersWayland())
        std::fprintf(stderr, "velmora: neither an X server nor the Wayland compositor %s can be reached.\n",
                     wayland.constData());
    else
        std::fputs(
            "velmora: this Wayland session has no X server, and Qt's Wayland plugin is missing: install "
            "XWayland or the package qt6-wayland.\n",
            stderr);
}

} // namespace

bool DisplaySystem::choose(int argc, char **argv)
{
    const QByteArray choice = userChoice(argc, argv);
    const QList<QByteArray> platforms = (choice.isEmpty() ? QByteArray("xcb;wayland") : choice).split(';');
    const auto usable = std::find_if(platforms.begin(), platforms.end(), isUsable);
    if (usable == platforms.end()) {
        complain();
        return false;
    }
    if (choice.isEmpty())
        qputenv(platformVariable, *usable);
    // Nobody is to wait for a server that does not answer.
    if (usable->startsWith("wayland"))
        qunsetenv("DISPLAY");
    return true;
}

QByteArray DisplaySystem::description()
{
    const QByteArray wayland = qgetenv("WAYLAND_DISPLAY");
    return "display " + (wayland.isEmpty() ? qgetenv("DISPLAY") : wayland);
}
