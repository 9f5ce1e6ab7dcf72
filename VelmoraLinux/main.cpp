#include "LinuxPlatform.h"

#include <VelmoraLinux/Clipboard/ClipboardKeeper.h>
#include <VelmoraLinux/Instance/LinuxApplicationInstance.h>
#include <VelmoraLinux/Process/BundleInfoFile.h>
#include <VelmoraLinux/Process/QuitSignals.h>
#include <VelmoraLinux/Process/StartConditions.h>
#include <VelmoraLinux/Updates/Handover.h>
#include <VelmoraMac/VelmoraMacApp.h>

#include <QDBusConnection>
#include <QGuiApplication>
#include <QtQml/qqmlextensionplugin.h>

using namespace Qt::StringLiterals;

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
    const ApplicationInstance::Role role = handover ? instance.claimWhenReleased() : instance.claim();
    if (role == ApplicationInstance::Role::second)
        return 0;
    LinuxPlatform platform(instance, token);
    VelmoraMacApp app(platform.platform());
    if (handover)
        platform.whenStanding([&handover] { handover->reportStanding(); });
    return app.run();
}
