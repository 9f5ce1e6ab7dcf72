#include "SentEvents.h"

#include <VelmoraLinux/Network/QtHttpsClient.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>
#include <VelmoraMac/TelemetryService.h>

#include <QTest>

#include <Fakes/FakeServices.h>
#include <Runner/RegisteredTest.h>
#include <TestBed/HttpsTestServer.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// The service over a real connection to a real server. Its delays run in virtual time where they are long.
class TelemetryDeliveryTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        certificate = std::make_unique<TestCertificate>(u"IP:127.0.0.1"_s);
        QVERIFY(certificate->isValid());
    }

    void init()
    {
        service.reset();
        state.reset();
        fakes = std::make_unique<FakeServices>();
        state = std::make_unique<AppState>(fakes->dependencies());
        server = std::make_unique<HttpsTestServer>(*certificate);
        client = std::make_unique<QtHttpsClient>(certificate->trustingIt());
        service = serviceOn(fakes->time);
    }

    void fortyFiveEventsArriveInThreeRequestsHalfASecondApart()
    {
        EventLoopScheduler realTime;
        service = serviceOn(realTime);
        track(45);
        QTRY_COMPARE_WITH_TIMEOUT(server->requests.size(), 3, 30000);
        QTRY_VERIFY(service->queue().isEmpty());
        QCOMPARE(valuesInEvents(server->requests.at(0).body, u"id"_s).size(), 20);
        QCOMPARE(valuesInEvents(server->requests.at(1).body, u"id"_s).size(), 20);
        QCOMPARE(valuesInEvents(server->requests.at(2).body, u"id"_s).size(), 5);
        QVERIFY(server->requests.at(1).at - server->requests.at(0).at >= 490ms);
        QVERIFY(server->requests.at(2).at - server->requests.at(1).at >= 490ms);
    }

    void whateverGoesWrongNothingIsLostAndItIsRepeatedAfterThirtySeconds_data()
    {
        QTest::addColumn<HttpsTestServer::Behaviour>("behaviour");
        QTest::newRow("500") << HttpsTestServer::answer(500);
        QTest::newRow("301 to plain HTTP")
            << HttpsTestServer::answer(301, "Location: http://127.0.0.1:9/\r\n");
        QTest::newRow("a reset connection") << HttpsTestServer::reset();
        QTest::newRow("an answer that breaks off") << HttpsTestServer::brokenOffBody();
    }

    void whateverGoesWrongNothingIsLostAndItIsRepeatedAfterThirtySeconds()
    {
        QFETCH(HttpsTestServer::Behaviour, behaviour);
        server->behaviours = {behaviour};
        const QStringList ids = track(3);
        fakes->time.pass(3s);
        QTRY_VERIFY(!server->requests.isEmpty());
        expectRetry(ids);
    }

    void aHangingServerIsGivenUpAfterEightSeconds()
    {
        server->behaviours = {HttpsTestServer::silence()};
        const QStringList ids = track(3);
        const auto begin = std::chrono::steady_clock::now();
        fakes->time.pass(3s);
        QTRY_COMPARE_WITH_TIMEOUT(fakes->time.waiting(), 1U, 60000); // The retry.
        QVERIFY(std::chrono::steady_clock::now() - begin >= 7900ms);
        expectRetry(ids);
    }

    void aWrongCertificateGetsNoEvent()
    {
        client = std::make_unique<QtHttpsClient>();
        service = serviceOn(fakes->time);
        const QStringList ids = track(3);
        fakes->time.pass(3s);
        QTRY_COMPARE(server->connections, 1);
        QTRY_COMPARE(fakes->time.waiting(), 1U);
        QVERIFY(server->requests.isEmpty());
        QCOMPARE(service->queue().size(), 3);
        QCOMPARE(service->queue().first().id, ids.first());
    }

    void aServerThatIsDownLosesNothing()
    {
        server->stop();
        const QStringList ids = track(3);
        fakes->time.pass(3s);
        QTRY_COMPARE(fakes->time.waiting(), 1U);
        QCOMPARE(service->queue().size(), 3);
        fakes->time.pass(29999ms);
        QCOMPARE(fakes->time.waiting(), 1U);
    }

    void aFullQueueKeepsTheNewestHundred()
    {
        const QStringList ids = track(103);
        for (int request = 1; request <= 5; ++request) {
            fakes->time.pass(request == 1 ? 3000ms : 500ms);
            QTRY_COMPARE(server->requests.size(), request);
            QTRY_COMPARE(service->queue().size(), 100 - 20 * request);
        }
        QStringList arrived;
        for (const HttpsTestServer::Request &request : server->requests)
            arrived += valuesInEvents(request.body, u"id"_s);
        QCOMPARE(arrived, ids.mid(3));
    }

private:
    std::unique_ptr<TelemetryService> serviceOn(Scheduler &scheduler)
    {
        return std::make_unique<TelemetryService>(
            TelemetryService::Dependencies{.defaults = fakes->defaults,
                                           .https = *client,
                                           .scheduler = scheduler,
                                           .clock = fakes->time.wallClock(),
                                           .bundle = fakes->bundle,
                                           .endpoint = server->url()});
    }

    // The identifiers of `count` new events, in order.
    QStringList track(int count)
    {
        QStringList ids;
        for (int i = 0; i < count; ++i) {
            service->track(TelemetryEventName::appOpened, *state);
            ids.append(service->queue().last().id);
        }
        return ids;
    }

    // After a failed attempt: everything is still there, and goes out again after thirty seconds, not before.
    void expectRetry(const QStringList &ids)
    {
        QTRY_COMPARE(fakes->time.waiting(), 1U);
        QCOMPARE(service->queue().size(), ids.size());
        const qsizetype before = server->requests.size();
        server->behaviours = {HttpsTestServer::answer(204)};
        fakes->time.pass(29999ms);
        QCOMPARE(fakes->time.waiting(), 1U);
        fakes->time.pass(1ms);
        QTRY_VERIFY(service->queue().isEmpty());
        QCOMPARE(server->requests.size(), before + 1);
        QCOMPARE(valuesInEvents(server->requests.last().body, u"id"_s), ids);
    }

    std::unique_ptr<TestCertificate> certificate;
    std::unique_ptr<FakeServices> fakes;
    std::unique_ptr<AppState> state;
    std::unique_ptr<HttpsTestServer> server;
    std::unique_ptr<QtHttpsClient> client;
    std::unique_ptr<TelemetryService> service;
};

static const RegisteredTest<TelemetryDeliveryTests> registered;
#include "TelemetryDeliveryTests.moc"
