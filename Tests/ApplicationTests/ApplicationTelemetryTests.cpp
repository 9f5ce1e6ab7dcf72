#include "SentEvents.h"
#include "TelemetryMarks.h"

#include <VelmoraLinux/Defaults/SqliteDefaultsStore.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/CopyingProgram.h>
#include <TestBed/HttpsTestServer.h>
#include <TestBed/XServer.h>

#include <csignal>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Without the services that a desktop's bus would start.
constexpr auto busConfiguration = R"(<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
</policy></busconfig>)";

const QString busName = u"app.velmora.Velmora"_s;

bool write(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The identifiers of a menu's entries by their labels, as the bus describes them.
void collectEntries(const QDBusArgument &menu, QMap<QString, int> &entries)
{
    int id = 0;
    QVariantMap properties;
    menu.beginStructure();
    menu >> id >> properties;
    entries.insert(properties.value(u"label"_s).toString(), id);
    menu.beginArray();
    while (!menu.atEnd()) {
        QDBusVariant child;
        menu >> child;
        collectEntries(child.variant().value<QDBusArgument>(), entries);
    }
    menu.endArray();
    menu.endStructure();
}

} // namespace

// The whole program on a private desktop, with all its network traffic recorded.
class ApplicationTelemetryTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        if (QProcess::execute(u"strace"_s, {u"-o"_s, u"/dev/null"_s, u"true"_s}) != 0)
            QSKIP("strace cannot watch a process here");
        if (QProcess::execute(u"unshare"_s,
                              {u"-Um"_s, u"--map-current-user"_s, u"--keep-caps"_s, u"true"_s}) != 0)
            QSKIP("the kernel allows no user namespaces, in which alone the test's certificate is trusted");
        certificate = std::make_unique<TestCertificate>(u"IP:127.0.0.1"_s);
        QVERIFY(certificate->isValid());
    }

    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        server = std::make_unique<HttpsTestServer>(*certificate);
        desktop = std::make_unique<XServer>();
        QVERIFY(desktop->isRunning());
        QVERIFY(startBus());
        QVERIFY(trustCertificate());
        QVERIFY(QDir().mkpath(folder->filePath(u"prefix/bin"_s)));
        QVERIFY(QDir().mkpath(folder->filePath(u"prefix/share/velmora"_s)));
        QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + u"/velmora"_s,
                            folder->filePath(u"prefix/bin/velmora"_s)));
    }

    void cleanup()
    {
        endApplication();
        QDBusConnection::disconnectFromBus(u"test"_s);
        if (busDaemon) {
            busDaemon->terminate();
            busDaemon->waitForFinished();
        }
        desktop.reset();
    }

    void nothingTheUserCopiedLeavesTheMachine()
    {
        configure(server->url().toString(), true);
        for (int launch = 0; launch < 2; ++launch) {
            QVERIFY(startApplication());
            useTheClipboard(launch * 3);
            useTheShell();
            endApplication();
        }
        // What was queued at the end of a launch is sent in the next, after its first events.
        QVERIFY(startApplication());
        QTRY_VERIFY_WITH_TIMEOUT(names().contains(u"app_quit"_s), 30000);
        endApplication();

        QCOMPARE(TelemetryMarks::in(everythingSent()), QStringList());
        for (const auto &name :
             {u"app_first_launch"_s, u"app_opened"_s, u"app_quit"_s, u"menu_popover_opened"_s,
              u"settings_opened"_s, u"link_cleaned"_s, u"cleaning_disabled"_s, u"cleaning_enabled"_s})
            QVERIFY2(names().contains(name), qPrintable(name));
        QVERIFY(!TelemetryMarks::in(storedHistory()).isEmpty()); // There was something to report.
        QCOMPARE(connectionsElsewhere(), QStringList());
        QVERIFY(trace().contains(serverAddress()));
    }

    void whatIsSwitchedOffConnectsToNothingAndResolvesNoName_data()
    {
        QTest::addColumn<QString>("endpoint");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("switched off") << u"https://velmora-events.example/e"_s << false;
        QTest::newRow("no endpoint") << QString() << true;
        QTest::newRow("an endpoint without TLS") << u"http://velmora-events.example/e"_s << true;
    }

    void whatIsSwitchedOffConnectsToNothingAndResolvesNoName()
    {
        QFETCH(QString, endpoint);
        QFETCH(bool, enabled);
        configure(endpoint, enabled);
        QVERIFY(startApplication());
        useTheClipboard(0);
        useTheShell();
        QTest::qWait(4000); // Past every delay after which something might be sent.
        endApplication();

        QVERIFY(!TelemetryMarks::in(storedHistory()).isEmpty());
        QCOMPARE(connectionsElsewhere(), QStringList());
        QVERIFY(!trace().contains(serverAddress()));
        static const QRegularExpression resolver(u"/etc/(resolv\\.conf|hosts|gai\\.conf)|velmora-events"_s);
        QVERIFY(!resolver.match(trace()).hasMatch());
    }

private:
    bool startBus()
    {
        if (!write(folder->filePath(u"bus.conf"_s), busConfiguration))
            return false;
        busDaemon = std::make_unique<QProcess>();
        busDaemon->start(u"dbus-daemon"_s, {u"--nofork"_s, u"--print-address"_s,
                                            u"--config-file="_s + folder->filePath(u"bus.conf"_s)});
        if (!busDaemon->waitForReadyRead())
            return false;
        busAddress = QString::fromUtf8(busDaemon->readLine().trimmed());
        return QDBusConnection::connectToBus(busAddress, u"test"_s).isConnected();
    }

    // A folder of trusted certificates as the system keeps them, with this one alone.
    bool trustCertificate()
    {
        const QString trusted = folder->filePath(u"trusted"_s);
        return QDir().mkpath(trusted) &&
               QFile::copy(certificate->certificateFile(), trusted + u"/test.pem"_s) &&
               QProcess::execute(u"openssl"_s, {u"rehash"_s, trusted}) == 0;
    }

    void configure(const QString &endpoint, bool enabled)
    {
        QJsonObject info{{u"CFBundleIdentifier"_s, busName}};
        if (!endpoint.isEmpty())
            info.insert(u"VelmoraTelemetryEndpoint"_s, endpoint);
        QVERIFY(write(folder->filePath(u"prefix/share/velmora/Info.json"_s), QJsonDocument(info).toJson()));
        SqliteDefaultsStore store(dataFolder());
        store.setBoolean(u"telemetryEnabled", enabled);
        store.setString(u"ignoredDomainsText", u"zqignored.example"_s);
        store.setString(u"language", u"english"_s);
    }

    bool startApplication()
    {
        application = std::make_unique<QProcess>();
        QProcessEnvironment environment = desktop->environment();
        for (const auto &[name, value] :
             {std::pair(u"HOME"_s, u"home"_s), std::pair(u"XDG_DATA_HOME"_s, u"data"_s),
              std::pair(u"XDG_CONFIG_HOME"_s, u"config"_s), std::pair(u"XDG_CACHE_HOME"_s, u"cache"_s)})
            environment.insert(name, folder->filePath(value));
        environment.insert(u"XDG_RUNTIME_DIR"_s, folder->path());
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, busAddress);
        environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
        application->setProcessEnvironment(environment);
        const QString command = u"mount --bind '%1' /etc/ssl/certs && exec strace -f -A -o '%2' "
                                u"-e trace=connect,sendto,open,openat '%3'"_s.arg(
                                    folder->filePath(u"trusted"_s), folder->filePath(u"trace"_s),
                                    folder->filePath(u"prefix/bin/velmora"_s));
        application->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        application->start(u"unshare"_s,
                           {u"-Um"_s, u"--map-current-user"_s, u"--keep-caps"_s, u"sh"_s, u"-c"_s, command});
        // The reply comes from the event loop, so the clipboard is watched from then on.
        const QVariantList status{u"org.kde.StatusNotifierItem"_s, u"Status"_s};
        return QTest::qWaitFor(
            [&] {
                return call(u"/StatusNotifierItem"_s, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, status);
            },
            30000);
    }

    void endApplication()
    {
        if (!application)
            return;
        const QDBusReply<uint> pid = bus().interface()->servicePid(busName);
        if (pid.isValid() && pid.value() > 1)
            ::kill(static_cast<pid_t>(pid.value()), SIGTERM);
        const bool ended = application->waitForFinished();
        if (!ended)
            application->kill();
        application.reset();
        QVERIFY(ended);
    }

    // Three copies that are cleaned, and one of an ignored domain.
    void useTheClipboard(int first)
    {
        CopyingProgram program(desktop->environment());
        for (int i = first; i < first + 3; ++i) {
            QVERIFY(program.copy(TelemetryMarks::copiedText(i)));
            QVERIFY(program.waitUntilLost(10s));
        }
        QVERIFY(program.copy("https://zqignored.example/?utm_zqtracker=zqsecret"));
    }

    // Popover, settings window and every entry of the menu that does not leave this desktop.
    void useTheShell()
    {
        QVERIFY(call(u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, u"Activate"_s, {100, 10}));
        QTest::qWait(300);
        choose(u"Pause"_s);
        choose(u"Resume"_s);
        choose(u"History"_s);
        choose(u"Settings"_s);
        QTest::qWait(300);
    }

    // Chooses the entry of the menu whose label begins so, as soon as there is one.
    void choose(const QString &label)
    {
        std::optional<int> entry;
        QTRY_VERIFY_WITH_TIMEOUT((entry = entryOf(label)).has_value(), 10000);
        QVERIFY(call(u"/StatusMenu"_s, u"com.canonical.dbusmenu"_s, u"Event"_s,
                     {*entry, u"clicked"_s, QVariant::fromValue(QDBusVariant(0)), 0U}));
    }

    static std::optional<int> entryOf(const QString &label)
    {
        const QDBusMessage answer =
            message(u"/StatusMenu"_s, u"com.canonical.dbusmenu"_s, u"GetLayout"_s, {0, -1, QStringList()});
        if (answer.arguments().size() != 2)
            return {};
        QMap<QString, int> entries;
        collectEntries(answer.arguments().at(1).value<QDBusArgument>(), entries);
        const auto entry = entries.lowerBound(label);
        const bool isFound = entry != entries.cend() && entry.key().startsWith(label);
        return isFound ? std::optional<int>(*entry) : std::nullopt;
    }

    static QDBusConnection bus() { return QDBusConnection(u"test"_s); }

    static QDBusMessage message(const QString &path, const QString &interface, const QString &member,
                                const QVariantList &arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(busName, path, interface, member);
        message.setArguments(arguments);
        return bus().call(message, QDBus::Block, 10000);
    }

    static bool call(const QString &path, const QString &interface, const QString &member,
                     const QVariantList &arguments = {})
    {
        return message(path, interface, member, arguments).type() == QDBusMessage::ReplyMessage;
    }

    [[nodiscard]] QString dataFolder() const { return folder->filePath(u"data/velmora"_s); }

    [[nodiscard]] QByteArray storedHistory() const
    {
        return SqliteDefaultsStore(dataFolder()).data(u"historyEntries").value_or(QByteArray());
    }

    [[nodiscard]] QString trace() const
    {
        return QString::fromUtf8(contentsOf(folder->filePath(u"trace"_s)));
    }

    [[nodiscard]] QString serverAddress() const { return u"htons(%1)"_s.arg(server->url().port()); }

    // System calls that address another machine, or a port of this one that is not the server's.
    [[nodiscard]] QStringList connectionsElsewhere() const
    {
        QStringList elsewhere;
        for (const QString &line : trace().split(u'\n')) {
            if (line.contains(u"AF_INET"_s) && !line.contains(serverAddress()))
                elsewhere.append(line);
        }
        return elsewhere;
    }

    [[nodiscard]] QByteArray everythingSent() const
    {
        QByteArray sent;
        for (const HttpsTestServer::Request &request : server->requests)
            sent += request.head + "\r\n\r\n" + request.body;
        return sent;
    }

    [[nodiscard]] QSet<QString> names() const
    {
        QSet<QString> names;
        for (const HttpsTestServer::Request &request : server->requests) {
            const QStringList sentNames = valuesInEvents(request.body, u"name"_s);
            for (const QString &name : sentNames)
                names.insert(name);
        }
        return names;
    }

    std::unique_ptr<TestCertificate> certificate;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<HttpsTestServer> server;
    std::unique_ptr<XServer> desktop;
    std::unique_ptr<QProcess> busDaemon;
    std::unique_ptr<QProcess> application;
    QString busAddress;
};

static const RegisteredTest<ApplicationTelemetryTests> registered;
#include "ApplicationTelemetryTests.moc"
