#include <VelmoraMac/TelemetryService.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

#include <Fakes/FakeHttpsClient.h>
#include <Fakes/FakeServices.h>
#include <Runner/RegisteredTest.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Event = TelemetryEventName;

QJsonArray eventsOf(const FakeHttpsClient::Request &request)
{
    return QJsonDocument::fromJson(request.json).object().value(u"events"_s).toArray();
}

QStringList idsOf(const QJsonArray &events)
{
    QStringList ids;
    for (const QJsonValue event : events)
        ids.append(event.toObject().value(u"id"_s).toString());
    return ids;
}

QStringList idsOf(const QList<TelemetryEnvelope> &queue)
{
    QStringList ids;
    for (const TelemetryEnvelope &envelope : queue)
        ids.append(envelope.id);
    return ids;
}

} // namespace

class TelemetryServiceTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        service.reset();
        state.reset();
        endpoint = QUrl(u"https://events.example/e"_s);
        fakes = std::make_unique<FakeServices>();
        https = std::make_unique<FakeHttpsClient>(fakes->time);
        state = std::make_unique<AppState>(fakes->dependencies());
        restart();
    }

    // Recording

    void anEventIsStoredAtOnceAndSentThreeSecondsLater()
    {
        https->replies = {200};
        service->track(Event::appOpened, *state);
        QCOMPARE(stored().size(), 1);

        fakes->time.pass(2999ms);
        QVERIFY(https->requests.isEmpty());
        fakes->time.pass(1ms);
        QCOMPARE(https->requests.size(), 1);
        QCOMPARE(https->requests.first().url, QUrl(u"https://events.example/e"_s));
        QCOMPARE(https->requests.first().timeLimit, 8000ms);
        QVERIFY(service->queue().isEmpty());
        QVERIFY(stored().isEmpty());
    }

    void aNewerEventPushesThePendingSendBack()
    {
        https->replies = {200};
        service->track(Event::appOpened, *state);
        fakes->time.pass(2s);
        service->track(Event::settingsOpened, *state);
        fakes->time.pass(2999ms);
        QVERIFY(https->requests.isEmpty());
        fakes->time.pass(1ms);
        QCOMPARE(eventsOf(https->requests.at(0)).size(), 2);
    }

    void aBatchIsExactlyThisJson()
    {
        https->replies = {204};
        fakes->defaults.place(u"telemetryInstallID"_s, u"8c0f5c8e-0000-4000-8000-0123456789ab"_s);
        fakes->bundle.values = {{u"CFBundleShortVersionString"_s, u"1.2.3"_s},
                                {u"CFBundleVersion"_s, u"77"_s}};
        fakes->time.pass(900ms); // The fraction of a second is cut off, not rounded.
        service->track(Event::linkCleaned, *state, {{u"removed_parameter_count_bucket"_s, u"3-5"_s}});
        fakes->time.pass(3s);

        QJsonObject body = QJsonDocument::fromJson(https->requests.first().json).object();
        QCOMPARE(body.keys(), QStringList(u"events"_s));
        QJsonObject event = body[u"events"_s].toArray().first().toObject();
        static const QRegularExpression lowerCaseUuid(u"^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$"_s);
        QVERIFY(lowerCaseUuid.match(event.take(u"id"_s).toString()).hasMatch());
        QJsonObject properties = event.take(u"properties"_s).toObject();
        QVERIFY(properties.take(u"macos_major_version"_s).toString().toInt() > 0);
        QCOMPARE(event, QJsonObject({{u"name"_s, u"link_cleaned"_s},
                                     {u"install_id"_s, u"8c0f5c8e-0000-4000-8000-0123456789ab"_s},
                                     {u"created_at"_s, u"2026-03-07T10:11:12Z"_s}}));
        QCOMPARE(properties, QJsonObject({{u"app_version"_s, u"1.2.3"_s},
                                          {u"build_number"_s, u"77"_s},
                                          {u"architecture"_s, u"arm64"_s},
                                          {u"app_language"_s, u"english"_s},
                                          {u"cleaning_mode"_s, u"auto"_s},
                                          {u"theme"_s, u"graphite"_s},
                                          {u"cleaned_count_bucket"_s, u"0"_s},
                                          {u"removed_parameter_count_bucket"_s, u"3-5"_s}}));
    }

    void anExtraPropertyReplacesABaseProperty()
    {
        service->track(Event::appOpened, *state, {{u"theme"_s, u"none"_s}});
        QCOMPARE(service->queue().first().properties[u"theme"_s], u"none"_s);
    }

    void propertiesAreThoseOfTheMomentOfTracking()
    {
        service->track(Event::appOpened, *state);
        state->setAppTheme(VelmoraTheme::ocean);
        service->track(Event::appOpened, *state);
        QCOMPARE(service->queue().at(0).properties[u"theme"_s], u"graphite"_s);
        QCOMPARE(service->queue().at(1).properties[u"theme"_s], u"ocean"_s);
    }

    void withTheSettingOffNothingIsRecorded()
    {
        service->track(Event::appOpened, *state);
        const QStringList before = idsOf(service->queue());
        state->setTelemetryEnabled(false);
        fakes->defaults.writes.clear();

        service->track(Event::appQuit, *state);
        QCOMPARE(idsOf(service->queue()), before);
        QVERIFY(fakes->defaults.writes.isEmpty());
    }

    void withTheSettingOffFromTheStartNothingIsEverSent()
    {
        state->setTelemetryEnabled(false);
        service->trackFirstLaunchIfNeeded(*state);
        service->track(Event::appOpened, *state);
        service->scheduleFlush(200ms);
        fakes->time.pass(24h);
        QVERIFY(https->requests.isEmpty());
        QVERIFY(!fakes->defaults.string(u"telemetryInstallID").has_value());
    }

    void eventsRecordedBeforeTheSettingWentOffAreStillDelivered()
    {
        https->replies = {200};
        service->track(Event::appOpened, *state);
        state->setTelemetryEnabled(false);
        fakes->time.pass(3s);
        QCOMPARE(https->requests.size(), 1);
        fakes->time.pass(24h);
        QCOMPARE(https->requests.size(), 1);
    }

    void withoutAnEndpointNothingIsRecordedOrSent()
    {
        endpoint.reset();
        restart();
        service->trackFirstLaunchIfNeeded(*state);
        service->track(Event::appOpened, *state);
        service->scheduleFlush(0ms);
        fakes->time.pass(24h);
        QVERIFY(service->queue().isEmpty());
        QVERIFY(https->requests.isEmpty());
        QVERIFY(!fakes->defaults.keys().contains(u"telemetryEventQueue"_s));
    }

    void theHundredAndFirstEventDropsTheOldest()
    {
        service->track(Event::appFirstLaunch, *state);
        for (int i = 0; i < 99; ++i)
            service->track(Event::appOpened, *state);
        QCOMPARE(service->queue().size(), 100);
        QCOMPARE(service->queue().first().name, u"app_first_launch"_s);

        service->track(Event::appQuit, *state);
        QCOMPARE(service->queue().size(), 100);
        QCOMPARE(service->queue().first().name, u"app_opened"_s);
        QCOMPARE(service->queue().last().name, u"app_quit"_s);
        QCOMPARE(stored(), service->queue());
    }

    // First launch and identifier

    void theFirstLaunchIsReportedOncePerInstallation()
    {
        service->trackFirstLaunchIfNeeded(*state);
        service->trackFirstLaunchIfNeeded(*state);
        restart();
        service->trackFirstLaunchIfNeeded(*state);
        QCOMPARE(service->queue().size(), 1);
        QCOMPARE(service->queue().first().name, u"app_first_launch"_s);
    }

    void anInstallationThatStartsWithTheSettingOffNeverReportsItsFirstLaunch()
    {
        state->setTelemetryEnabled(false);
        service->trackFirstLaunchIfNeeded(*state);
        QCOMPARE(fakes->defaults.boolean(u"telemetryFirstLaunchTracked"), true);

        state->setTelemetryEnabled(true);
        restart();
        service->trackFirstLaunchIfNeeded(*state);
        QVERIFY(service->queue().isEmpty());
    }

    void theInstallationsIdentifierIsMadeOnceInLowerCase()
    {
        const QString made = service->installID();
        QCOMPARE(made, made.toLower());
        QCOMPARE(made.size(), 36);
        QCOMPARE(fakes->defaults.string(u"telemetryInstallID"), made);
        restart();
        QCOMPARE(service->installID(), made);
    }

    void aStoredIdentifierIsReused()
    {
        fakes->defaults.place(u"telemetryInstallID"_s, u"KEPT-as-it-is"_s);
        QCOMPARE(service->installID(), u"KEPT-as-it-is"_s);
        service->track(Event::appOpened, *state);
        QCOMPARE(service->queue().first().installID, u"KEPT-as-it-is"_s);
    }

    // Delivery

    void fortyFiveEventsGoAsTwentyTwentyAndFive()
    {
        https->replies = {200, 200, 200};
        for (int i = 0; i < 45; ++i)
            service->track(Event::appOpened, *state);
        const QStringList ids = idsOf(service->queue());
        fakes->time.pass(1min);

        QCOMPARE(https->requests.size(), 3);
        QCOMPARE(idsOf(eventsOf(https->requests.at(0))), ids.mid(0, 20));
        QCOMPARE(idsOf(eventsOf(https->requests.at(1))), ids.mid(20, 20));
        QCOMPARE(idsOf(eventsOf(https->requests.at(2))), ids.mid(40));
        QVERIFY(https->requests.at(1).sentAt - https->requests.at(0).sentAt == 500ms);
        QVERIFY(https->requests.at(2).sentAt - https->requests.at(1).sentAt == 500ms);
        QVERIFY(service->queue().isEmpty());
    }

    void anyFailureKeepsTheBatchAndIsRepeatedAfterThirtySeconds_data()
    {
        QTest::addColumn<int>("status"); // 0: no answer.
        for (const int status : {0, 100, 199, 300, 301, 304, 400, 404, 500, 503})
            QTest::addRow("%d", status) << status;
    }

    void anyFailureKeepsTheBatchAndIsRepeatedAfterThirtySeconds()
    {
        QFETCH(int, status);
        https->replies = {status == 0 ? std::nullopt : std::optional<int>(status), 200};
        service->track(Event::appOpened, *state);
        service->track(Event::settingsOpened, *state);
        const QList<TelemetryEnvelope> before = service->queue();

        fakes->time.pass(3s);
        QCOMPARE(service->queue(), before);
        QCOMPARE(stored(), before);
        fakes->time.pass(29999ms);
        QCOMPARE(https->requests.size(), 1);
        fakes->time.pass(1ms);
        QCOMPARE(https->requests.size(), 2);
        QCOMPARE(https->requests.at(1).json, https->requests.at(0).json);
        QVERIFY(service->queue().isEmpty());
    }

    void everyStatusFrom200To299IsASuccess()
    {
        https->replies = {200, 204, 299};
        for (int i = 0; i < 3; ++i) {
            service->track(Event::appOpened, *state);
            fakes->time.pass(3s);
            QVERIFY(service->queue().isEmpty());
        }
    }

    void anEventTrackedWhileARequestIsInFlightStays()
    {
        https->replies = {200, 200};
        https->answerDelay = 5s;
        service->track(Event::appOpened, *state);
        fakes->time.pass(4s);
        service->track(Event::settingsOpened, *state);
        fakes->time.pass(4s);
        QCOMPARE(service->queue().size(), 1);
        QCOMPARE(service->queue().first().name, u"settings_opened"_s);
        QCOMPARE(https->requests.size(), 1);
        fakes->time.pass(500ms);
        QCOMPARE(https->requests.size(), 2);
    }

    void onlyOneRequestIsUnderWayAtATime()
    {
        https->replies = {200};
        https->answerDelay = 7s;
        service->track(Event::appOpened, *state);
        fakes->time.pass(3s);
        service->scheduleFlush(0ms);
        fakes->time.pass(1s);
        QCOMPARE(https->requests.size(), 1);
    }

    void quittingSendsAfterAFifthOfASecond()
    {
        https->replies = {200};
        service->track(Event::appQuit, *state);
        service->scheduleFlush(200ms);
        fakes->time.pass(199ms);
        QVERIFY(https->requests.isEmpty());
        fakes->time.pass(1ms);
        QCOMPARE(https->requests.size(), 1);
    }

    // Restarts

    void aStoredQueueIsSentOnceANewEventSchedulesIt()
    {
        https->replies = {200};
        service->track(Event::appOpened, *state);
        const QList<TelemetryEnvelope> before = service->queue();
        restart();
        QCOMPARE(service->queue(), before);
        fakes->time.pass(24h);
        QVERIFY(https->requests.isEmpty());

        service->track(Event::appOpened, *state);
        fakes->time.pass(3s);
        QCOMPARE(eventsOf(https->requests.first()).size(), 2);
        QCOMPARE(idsOf(eventsOf(https->requests.first())).first(), before.first().id);
    }

    void aProcessThatEndsBeforeTheAnswerRepeatsTheSameIdentifiers()
    {
        https->replies = {200, 200};
        https->answerDelay = 1s;
        service->track(Event::appOpened, *state);
        fakes->time.pass(3s);
        restart();
        fakes->time.pass(1min);
        QCOMPARE(service->queue().size(), 1);

        service->track(Event::appOpened, *state);
        fakes->time.pass(3s);
        QCOMPARE(idsOf(eventsOf(https->requests.at(1))).first(),
                 idsOf(eventsOf(https->requests.at(0))).first());
    }

    void aDamagedQueueIsReplacedByAnEmptyOne_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("no JSON") << QByteArray("garbage");
        QTest::newRow("an object") << QByteArray("{}");
        QTest::newRow("an incomplete event") << QByteArray(R"([{"id":"x"}])");
        const QByteArray whole =
            R"([{"id":"x","name":"n","install_id":"i","created_at":"2026-03-07T10:11:12Z",)"
            R"("properties":{"a":"b"}}])";
        QVERIFY(queueFromJson(whole).has_value());
        QTest::newRow("a date without a zone") << QByteArray(whole).replace("12Z", "12");
        QTest::newRow("a day that is none") << QByteArray(whole).replace("03-07", "03-32");
        QTest::newRow("a number as property") << QByteArray(whole).replace("\"b\"", "1");
        QTest::newRow("cut off") << whole.chopped(1);
    }

    void aDamagedQueueIsReplacedByAnEmptyOne()
    {
        QFETCH(QByteArray, json);
        fakes->defaults.place(u"telemetryEventQueue"_s, json);
        restart();
        QVERIFY(service->queue().isEmpty());
        service->track(Event::appOpened, *state);
        QCOMPARE(stored().size(), 1);
    }

    void aDestroyedServiceIsNotTouchedByTheAnswerOrTheTimer()
    {
        https->replies = {200};
        https->answerDelay = 1s;
        service->track(Event::appOpened, *state);
        fakes->time.pass(3s);
        service->scheduleFlush(5s);
        service.reset();
        fakes->time.pass(1min);
        QCOMPARE(stored().size(), 1);
    }

private:
    void restart()
    {
        service.reset();
        service = std::make_unique<TelemetryService>(
            TelemetryService::Dependencies{.defaults = fakes->defaults,
                                           .https = *https,
                                           .scheduler = fakes->time,
                                           .clock = fakes->time.wallClock(),
                                           .bundle = fakes->bundle,
                                           .endpoint = endpoint});
    }

    [[nodiscard]] QList<TelemetryEnvelope> stored() const
    {
        return queueFromJson(fakes->defaults.data(u"telemetryEventQueue").value_or(QByteArray()))
            .value_or(QList<TelemetryEnvelope>());
    }

    std::optional<QUrl> endpoint;
    std::unique_ptr<FakeServices> fakes;
    std::unique_ptr<FakeHttpsClient> https;
    std::unique_ptr<AppState> state;
    std::unique_ptr<TelemetryService> service;
};

static const RegisteredTest<TelemetryServiceTests> registered;
#include "TelemetryServiceTests.moc"
