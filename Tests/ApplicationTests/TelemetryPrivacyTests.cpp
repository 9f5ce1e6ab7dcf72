#include "SentEvents.h"
#include "TelemetryMarks.h"

#include <VelmoraLinux/Network/QtHttpsClient.h>
#include <VelmoraMac/ClipboardMonitor.h>
#include <VelmoraMac/TelemetryService.h>

#include <QSet>
#include <QTest>

#include <Fakes/FakeServices.h>
#include <Fakes/RecordingNotices.h>
#include <Fakes/StoredHistory.h>
#include <Runner/RegisteredTest.h>
#include <TestBed/HttpsTestServer.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// Links, domains and clipboard contents never leave the machine.
class TelemetryPrivacyTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        certificate = std::make_unique<TestCertificate>(u"IP:127.0.0.1"_s);
        QVERIFY(certificate->isValid());
    }

    void theSearchFindsAMarkInEverySpelling()
    {
        for (const QByteArray &sent :
             {QByteArray(R"({"a":"zqHOST1.example"})"), QByteArray("zqhost").toHex(),
              QByteArray(R"({"h": "zqhost1.example"})").toBase64(), QByteArray("..zqhost..").toBase64(),
              QByteArray("...zqhost...").toBase64()})
            QVERIFY2(!TelemetryMarks::in(sent).isEmpty(), sent.constData());
        QVERIFY(TelemetryMarks::in(R"({"name":"link_cleaned"})").isEmpty());
    }

    void nothingTheUserCopiedOrTypedIsInAnyByteThatIsSent()
    {
        start();
        doEverything();
        deliver();

        QByteArray sent;
        QSet<QString> names;
        for (const HttpsTestServer::Request &request : server->requests) {
            sent += request.head + "\r\n\r\n" + request.body;
            const QStringList sentNames = valuesInEvents(request.body, u"name"_s);
            for (const QString &name : sentNames)
                names.insert(name);
        }
        QCOMPARE(TelemetryMarks::in(sent), QStringList());
        // Proof that the test sees something: every kind of event was sent.
        QCOMPARE(names.size(), 12);
        QVERIFY(names.contains(u"link_cleaned"_s));
        QVERIFY(state->totalCleaned() >= 6);
        // And that the marks could have been sent: the stored history contains them.
        QVERIFY(!TelemetryMarks::in(historyToJson(state->historyEntries())).isEmpty());
    }

    void everyPropertyHasOneOfItsFewValues()
    {
        start();
        doEverything();
        static const QMap<QString, QSet<QString>> allowed{
            {u"app_version"_s, {u"0.1.9"_s}},
            {u"build_number"_s, {u"10"_s}},
            {u"architecture"_s, {u"arm64"_s}},
            {u"app_language"_s, {u"system"_s, u"english"_s, u"german"_s}},
            {u"cleaning_mode"_s, {u"manual"_s, u"ask"_s, u"auto"_s}},
            {u"theme"_s, {u"aurora"_s, u"ocean"_s, u"light"_s, u"graphite"_s}},
            {u"cleaned_count_bucket"_s, {u"0"_s, u"1-5"_s, u"6-25"_s, u"26-100"_s, u"100+"_s}},
            {u"removed_parameter_count_bucket"_s, {u"0"_s, u"1-2"_s, u"3-5"_s, u"6-10"_s, u"10+"_s}},
        };
        QVERIFY(service->queue().size() > 20);
        for (const TelemetryEnvelope &envelope : service->queue()) {
            QMap<QString, QString> properties = envelope.properties;
            bool isNumber = false;
            properties.take(u"macos_major_version"_s).toInt(&isNumber);
            QVERIFY(isNumber);
            for (auto property = properties.cbegin(); property != properties.cend(); ++property)
                QVERIFY2(allowed.value(property.key()).contains(property.value()),
                         qPrintable(property.key()));
        }
    }

private:
    void start()
    {
        monitor.reset();
        state.reset();
        service.reset();
        notices = {};
        fakes = std::make_unique<FakeServices>();
        server = std::make_unique<HttpsTestServer>(*certificate);
        client = std::make_unique<QtHttpsClient>(certificate->trustingIt());
        service = std::make_unique<TelemetryService>(
            TelemetryService::Dependencies{.defaults = fakes->defaults,
                                           .https = *client,
                                           .scheduler = fakes->time,
                                           .clock = fakes->time.wallClock(),
                                           .bundle = fakes->bundle,
                                           .endpoint = server->url()});
        state = std::make_unique<AppState>(AppState::Dependencies{.defaults = fakes->defaults,
                                                                  .pasteboard = fakes->pasteboard,
                                                                  .loginItem = fakes->loginItem,
                                                                  .bundle = fakes->bundle,
                                                                  .clock = fakes->time.wallClock(),
                                                                  .telemetry = *service});
        monitor = std::make_unique<ClipboardMonitor>(fakes->pasteboard, fakes->time, notices);
        monitor->start(*state);
    }

    // No more than a second passes: what is recorded waits in the queue.
    void copy(const std::string &text)
    {
        fakes->pasteboard.copy(text);
        fakes->time.pass(220ms);
    }

    // Every action that a user has, with marks wherever a text can be given.
    void doEverything()
    {
        service->trackFirstLaunchIfNeeded(*state);
        service->track(TelemetryEventName::appOpened, *state);
        for (int i = 0; i < 5; ++i)
            copy(TelemetryMarks::copiedText(i).toStdString());
        changeSettings();
        state->setIgnoredDomainsText(u"zqignored.example\nother.zqignored.example"_s);
        state->addIgnoredHostFromLastResult();
        copy(TelemetryMarks::copiedText(4).toStdString()); // Ignored by now.
        state->setIgnoredDomainsText(QString());
        state->setAskBeforeCleaningEnabled(true);
        copy(TelemetryMarks::copiedText(5).toStdString());
        notices.warnings.constLast().cleanAction();
        state->copyCleanedLink(state->historyEntries().constLast());
        state->restoreOriginalLink(state->historyEntries().constLast());
        fakes->time.pass(220ms);
        state->setAutoCleanEnabled(false);
        copy(TelemetryMarks::copiedText(6).toStdString());
        state->setAutoCleanEnabled(true);
        service->track(TelemetryEventName::menuPopoverOpened, *state);
        service->track(TelemetryEventName::settingsOpened, *state);
        state->clearHistory();
        copy(TelemetryMarks::copiedText(7).toStdString());
        notices.warnings.constLast().cleanAction();
        service->track(TelemetryEventName::appQuit, *state);
    }

    void changeSettings()
    {
        for (const int theme : allValues<VelmoraTheme>())
            state->setAppTheme(static_cast<VelmoraTheme>(theme));
        for (const int language : allValues<AppLanguage>())
            state->setLanguage(static_cast<AppLanguage>(language));
        for (const bool enabled : {false, true, false})
            state->setLaunchAtLoginEnabled(enabled);
        for (const auto tab : {AppTab::cleaning, AppTab::history, AppTab::general})
            state->setActiveAppTab(tab);
        state->setTelemetryEnabled(false);
        state->setTelemetryEnabled(true);
    }

    void deliver()
    {
        fakes->time.pass(3s);
        while (!service->queue().isEmpty()) {
            const qsizetype before = service->queue().size();
            QTRY_VERIFY_WITH_TIMEOUT(service->queue().size() < before, 10000);
            fakes->time.pass(500ms);
        }
    }

    std::unique_ptr<TestCertificate> certificate;
    RecordingNotices notices;
    std::unique_ptr<FakeServices> fakes;
    std::unique_ptr<HttpsTestServer> server;
    std::unique_ptr<QtHttpsClient> client;
    std::unique_ptr<TelemetryService> service;
    std::unique_ptr<AppState> state;
    std::unique_ptr<ClipboardMonitor> monitor;
};

static const RegisteredTest<TelemetryPrivacyTests> registered;
#include "TelemetryPrivacyTests.moc"
