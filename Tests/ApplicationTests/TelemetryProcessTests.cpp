#include "SentEvents.h"

#include <VelmoraLinux/Defaults/SqliteDefaultsStore.h>
#include <VelmoraMac/Telemetry/TelemetryEnvelope.h>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/HttpsTestServer.h>

#include <memory>

using namespace Qt::StringLiterals;

// What a whole process does, seen from outside: killed in the middle of a delivery, and watched by strace.
class TelemetryProcessTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        certificate = std::make_unique<TestCertificate>(u"IP:127.0.0.1"_s);
        QVERIFY(certificate->isValid());
        server = std::make_unique<HttpsTestServer>(*certificate);
        folder = std::make_unique<QTemporaryDir>();
    }

    void aProcessKilledBeforeTheAnswerLosesNothingAndRepeatsTheSameIdentifiers()
    {
        server->behaviours = {HttpsTestServer::silence()};
        QProcess first;
        start(first, server->url().toString(), u"on"_s);
        QTRY_COMPARE_WITH_TIMEOUT(server->requests.size(), 1, 30000);
        first.kill();
        QVERIFY(first.waitForFinished());
        const QStringList sent = valuesInEvents(server->requests.first().body, u"id"_s);
        QVERIFY(sent.size() > 5);
        QCOMPARE(storedIds(), sent);

        server->behaviours = {HttpsTestServer::answer(200)};
        QProcess second;
        start(second, server->url().toString(), u"kept"_s);
        QTRY_COMPARE_WITH_TIMEOUT(server->requests.size(), 3,
                                  30000); // The repeat, and what did not fit into it.
        QCOMPARE(valuesInEvents(server->requests.at(1).body, u"id"_s).mid(0, sent.size()), sent);
        QTRY_VERIFY_WITH_TIMEOUT(storedIds().isEmpty(), 30000);
        end(second);
    }

    void whatIsSwitchedOffConnectsToNothingAndResolvesNoName_data()
    {
        QTest::addColumn<bool>("hasEndpoint");
        QTest::addColumn<QString>("choice");
        QTest::addColumn<bool>("reaches");
        QTest::newRow("switched on: the watch works") << true << u"on"_s << true;
        QTest::newRow("switched off") << true << u"off"_s << false;
        QTest::newRow("no endpoint") << false << u"on"_s << false;
    }

    void whatIsSwitchedOffConnectsToNothingAndResolvesNoName()
    {
        QFETCH(bool, hasEndpoint);
        QFETCH(QString, choice);
        QFETCH(bool, reaches);
        if (QProcess::execute(u"strace"_s, {u"-o"_s, u"/dev/null"_s, u"true"_s}) != 0)
            QSKIP("strace cannot watch a process here");
        const QString trace = folder->filePath(u"trace"_s);
        QProcess process;
        process.setProgram(u"strace"_s);
        process.setArguments(
            QStringList({u"-f"_s, u"-o"_s, trace, u"-e"_s, u"trace=network,open,openat"_s, program()}) +
            arguments(hasEndpoint ? u"https://localhost.invalid/e"_s : QString(), choice));
        process.start();
        QVERIFY(waitUntilTracked(process));
        QTest::qWait(4000); // Past every delay after which something might be sent.
        end(process);

        QFile file(trace);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString calls = QString::fromUtf8(file.readAll());
        QVERIFY(calls.contains(u"defaults.sqlite"_s));
        static const QRegularExpression outward(
            u"AF_INET|AF_NETLINK|connect\\(|/etc/(resolv\\.conf|hosts|nsswitch\\.conf|gai\\.conf)"_s);
        const QRegularExpressionMatch match = outward.match(calls);
        QCOMPARE(match.hasMatch(), reaches);
    }

private:
    static QString program() { return QCoreApplication::applicationDirPath() + u"/TelemetryProcess"_s; }

    [[nodiscard]] QStringList arguments(const QString &endpoint, const QString &choice) const
    {
        return {folder->path(), endpoint, certificate->certificateFile(), choice};
    }

    static bool waitUntilTracked(QProcess &process)
    {
        return process.waitForReadyRead() && process.readAllStandardOutput().startsWith("tracked");
    }

    void start(QProcess &process, const QString &endpoint, const QString &choice) const
    {
        process.start(program(), arguments(endpoint, choice));
        QVERIFY(waitUntilTracked(process));
    }

    static void end(QProcess &process)
    {
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
    }

    [[nodiscard]] QStringList storedIds() const
    {
        const SqliteDefaultsStore store(folder->path());
        const auto queue = queueFromJson(store.data(u"telemetryEventQueue").value_or(QByteArray()));
        QStringList ids;
        for (const TelemetryEnvelope &envelope : queue.value_or(QList<TelemetryEnvelope>()))
            ids.append(envelope.id);
        return ids;
    }

    std::unique_ptr<TestCertificate> certificate;
    std::unique_ptr<HttpsTestServer> server;
    std::unique_ptr<QTemporaryDir> folder;
};

static const RegisteredTest<TelemetryProcessTests> registered;
#include "TelemetryProcessTests.moc"
