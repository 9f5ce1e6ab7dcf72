#include "LinuxPlatform.h"

#include <VelmoraLinux/Clipboard/ClipboardKeeper.h>
#include <VelmoraLinux/Instance/HomeLock.h>
#include <VelmoraLinux/Instance/LinuxApplicationInstance.h>
#include <VelmoraLinux/Process/BundleInfoFile.h>
#include <VelmoraLinux/Process/DisplaySystem.h>
#include <VelmoraLinux/Process/QuitSignals.h>
#include <VelmoraLinux/Process/StartConditions.h>
#include <VelmoraLinux/Process/SuddenEnd.h>
#include <VelmoraLinux/Process/XdgFolders.h>
#include <VelmoraLinux/Updates/Handover.h>
#include <VelmoraMac/VelmoraMacApp.h>

#include <QDBusConnection>
#include <QGuiApplication>
#include <QtQml/qqmlextensionplugin.h>

#include <cstdio>
#include <cstdlib>
#include <optional>

using namespace Qt::StringLiterals;

using Action = ApplicationInstance::Action;
using Role = ApplicationInstance::Role;

Q_IMPORT_QML_PLUGIN(VelmoraMacPlugin)

namespace {

// After an update the previous version is still running; it ends when this one reports that it can run. Null
// when this is an ordinary start.
std::unique_ptr<HandoverReceiver> takeOver(int argc, char **argv)
{
    std::unique_ptr<HandoverReceiver> receiver = HandoverReceiver::fromArguments(argc, argv);
    if (receiver != nullptr) {
        const BundleInfoFile bundle(QCoreApplication::applicationDirPath());
        receiver->takeOver(bundle.value(u"CFBundleVersion").toString());
    }
    return receiver;
}

// The exit status of a process that is not the one to run; nothing when it is. Says why, where nothing else does.
std::optional<int> statusUnlessFirst(Role role, std::optional<Action> request, HomeLock &home,
                                     bool isHandover)
{
    if (role == Role::second)
        return EXIT_SUCCESS;
    if (role == Role::unanswered) {
        std::fputs(
            "velmora: it is running already but does not answer. End that process, then start again.\n",
            stderr);
        return EXIT_FAILURE;
    }
    if (request == Action::quit) {
        std::fputs("velmora: it is not running.\n", stderr);
        return EXIT_FAILURE;
    }
    const QByteArray where = DisplaySystem::description();
    if (isHandover ? home.takeFromPredecessor(where) : home.take(where))
        return std::nullopt;
    std::fprintf(stderr,
                 "velmora: it is running already in another session of yours: %s. Quit it there first.\n",
                 home.holder().constData());
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv)
{
    StartConditions::ignoreWriteSignals();
    StartConditions::forbidCoreDumps();
    if (const auto status = ClipboardKeeper::run(argc, argv))
        return *status;
    if (const auto status = StartConditions::check(argc, argv, VELMORA_VERSION))
        return *status;

    const QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"velmora"_s);
    QGuiApplication::setApplicationDisplayName(u"Velmora"_s);
    QGuiApplication::setApplicationVersion(u"" VELMORA_VERSION ""_s);
    QGuiApplication::setDesktopFileName(u"app.velmora.Velmora"_s);
    const QuitSignals quitSignals;
    const std::unique_ptr<HandoverReceiver> handover = takeOver(argc, argv);

    ActivationToken token;
    LinuxApplicationInstance instance(QDBusConnection::sessionBus(), u"app.velmora.Velmora"_s, token);
    const auto request = StartConditions::requestedAction(argc, argv);
    if (request)
        instance.setRequest(*request);
    const Role role = handover ? instance.claimWhenReleased() : instance.claim();
    HomeLock home(XdgFolders::dataHome() + u"/velmora"_s);
    if (const auto status = statusUnlessFirst(role, request, home, handover != nullptr))
        return *status;
    LinuxPlatform platform(instance, token);
    VelmoraMacApp app(platform.platform());
    if (request)
        app.performAtStart(*request);
    if (handover)
        platform.whenStanding([&handover] { handover->reportStanding(); });
    const SuddenEnd suddenEnd([&app] { app.finish(); });
    return app.run();
}
