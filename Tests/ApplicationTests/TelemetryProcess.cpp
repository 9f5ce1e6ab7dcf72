// A separate process that records every kind of event, for tests that observe it from outside or kill it.
// Usage: TelemetryProcess FOLDER ENDPOINT CERTIFICATE on|off|kept
//
// FOLDER holds the defaults; an empty ENDPOINT is a build without one. "on" and "off" set the user's choice
// first, "kept" takes the stored one. It prints "tracked" once its events are recorded and ends when its
// input is closed.

#include <VelmoraLinux/Defaults/SqliteDefaultsStore.h>
#include <VelmoraLinux/Network/QtHttpsClient.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>
#include <VelmoraLinux/Time/SystemWallClock.h>
#include <VelmoraMac/AppState.h>
#include <VelmoraMac/Telemetry/TelemetryConfig.h>
#include <VelmoraMac/TelemetryService.h>

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QSslCertificate>

#include <Fakes/FakeBundleInfo.h>
#include <Fakes/FakeLoginItem.h>
#include <Fakes/FakePasteboard.h>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

void changeEverySetting(AppState &state)
{
    state.setAutoCleanEnabled(!state.autoCleanEnabled());
    state.setAutoCleanEnabled(!state.autoCleanEnabled());
    state.setIgnoredDomainsText(u"a.example\nb.example"_s);
    state.setIgnoredDomainsText(QString());
    state.setAppTheme(VelmoraTheme::ocean);
    state.setAppTheme(VelmoraTheme::light);
    state.setLanguage(AppLanguage::german);
    state.setLanguage(AppLanguage::english);
    state.record({u"https://a.example/?si=1"_s, u"https://a.example/"_s, {u"si"_s}});
}

QtHttpsClient *makeClient(const QString &certificateFile, QObject *parent)
{
    QFile file(certificateFile);
    if (!file.open(QIODevice::ReadOnly))
        return new QtHttpsClient(parent);
    QSslConfiguration security = QSslConfiguration::defaultConfiguration();
    security.setCaCertificates({QSslCertificate(file.readAll())});
    return new QtHttpsClient(security, parent);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 5)
        return 2;

    SqliteDefaultsStore defaults(arguments.at(1));
    EventLoopScheduler scheduler;
    const SystemWallClock clock;
    FakePasteboard pasteboard(scheduler);
    FakeLoginItem loginItem;
    FakeBundleInfo bundle;
    if (!arguments.at(2).isEmpty())
        bundle.values.insert(u"VelmoraTelemetryEndpoint"_s, arguments.at(2));
    QtHttpsClient *https = makeClient(arguments.at(3), &application);
    TelemetryService service(
        {defaults, *https, scheduler, clock, bundle, TelemetryConfig::endpointURL(bundle)});
    AppState state({defaults, pasteboard, loginItem, bundle, clock, service});

    if (arguments.at(4) != "kept"_L1)
        state.setTelemetryEnabled(arguments.at(4) == "on"_L1);
    service.trackFirstLaunchIfNeeded(state);
    service.track(TelemetryEventName::appOpened, state);
    changeEverySetting(state);
    service.track(TelemetryEventName::appQuit, state);
    service.scheduleFlush(200ms);
    std::puts("tracked");
    std::fflush(stdout);

    const QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
