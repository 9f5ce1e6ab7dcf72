#include <VelmoraLinux/Network/QtHttpsClient.h>

#include <QDir>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/HttpsTestServer.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// The status, 0 for a failure, -1 while there is none.
class Outcome {
public:
    HttpsClient::Completion taker()
    {
        return [this](std::optional<int> status) {
            ++calls;
            value = status.value_or(0);
        };
    }

    int value = -1;
    int calls = 0;
};

qsizetype threads()
{
    return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

} // namespace

class QtHttpsClientTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        certificate = std::make_unique<TestCertificate>(u"IP:127.0.0.1"_s);
        QVERIFY(certificate->isValid());
    }

    void init()
    {
        server = std::make_unique<HttpsTestServer>(*certificate);
        client = std::make_unique<QtHttpsClient>(certificate->trustingIt());
        outcome = {};
    }

    void theRequestIsThePostAndNothingMore()
    {
        post();
        QTRY_COMPARE(outcome.value, 200);
        QCOMPARE(server->requests.size(), 1);
        QCOMPARE(server->requests.first().body, json);

        QList<QByteArray> lines = server->requests.first().head.split('\n');
        QCOMPARE(lines.takeFirst().trimmed(), "POST /functions/v1/telemetry-events HTTP/1.1");
        for (QByteArray &line :
             lines) { // Names may be written in any case, and newer versions of Qt use another.
            const auto colon = line.indexOf(':');
            line = line.left(colon).toLower() + line.mid(colon).trimmed();
        }
        std::sort(lines.begin(), lines.end());
        QCOMPARE(lines, QList<QByteArray>(
                            {"accept-encoding: identity", "accept-language: *", "connection: close",
                             "content-length: " + QByteArray::number(json.size()),
                             "content-type: application/json", "host: " + host(), "user-agent: Velmora"}));
    }

    void everyStatusIsReported_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {200, 204, 304, 400, 401, 403, 404, 413, 429, 500, 503})
            QTest::addRow("%d", status) << status;
    }

    void everyStatusIsReported()
    {
        QFETCH(int, status);
        server->behaviours = {HttpsTestServer::answer(status)};
        post();
        QTRY_COMPARE(outcome.value, status);
        QCOMPARE(outcome.calls, 1);
    }

    void noRedirectionIsFollowed_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("toPlainHttp");
        for (const int status : {301, 302, 303, 307, 308}) {
            QTest::addRow("%d to HTTP", status) << status << true;
            QTest::addRow("%d to HTTPS", status) << status << false;
        }
    }

    void noRedirectionIsFollowed()
    {
        QFETCH(int, status);
        QFETCH(bool, toPlainHttp);
        QTcpServer plain;
        QVERIFY(plain.listen(QHostAddress::LocalHost));
        HttpsTestServer other(*certificate);
        const QByteArray target = toPlainHttp
                                      ? "http://127.0.0.1:" + QByteArray::number(plain.serverPort()) + "/"
                                      : other.url().toEncoded();
        server->behaviours = {HttpsTestServer::answer(status, "Location: " + target + "\r\n")};

        post();
        QTRY_COMPARE(outcome.value, status);
        QVERIFY(!plain.waitForNewConnection(50));
        QCOMPARE(other.connections, 0);
    }

    void cookiesAreNotGivenBack()
    {
        server->behaviours = {HttpsTestServer::answer(200, "Set-Cookie: id=1; Path=/\r\n")};
        post();
        QTRY_COMPARE(outcome.value, 200);
        post();
        QTRY_COMPARE(outcome.calls, 2);
        QVERIFY(!server->requests.at(1).head.toLower().contains("cookie"));
    }

    void aSilentServerIsGivenUpAfterTheTimeLimit()
    {
        server->behaviours = {HttpsTestServer::silence()};
        const auto begin = std::chrono::steady_clock::now();
        post(400ms);
        QTRY_COMPARE(outcome.value, 0);
        QVERIFY(std::chrono::steady_clock::now() - begin >= 400ms);
        QTest::qWait(50);
        QCOMPARE(outcome.calls, 1);
    }

    void theTimeLimitCoversTheHandshake()
    {
        QTcpServer mute; // Accepts and never speaks TLS.
        QVERIFY(mute.listen(QHostAddress::LocalHost));
        client->postJson(QUrl(u"https://127.0.0.1:%1/"_s.arg(mute.serverPort())), json, 400ms,
                         outcome.taker());
        QTRY_COMPARE(outcome.value, 0);
    }

    void aBrokenConnectionIsAFailure()
    {
        server->behaviours = {HttpsTestServer::reset()};
        post();
        QTRY_COMPARE(outcome.value, 0);
        QCOMPARE(outcome.calls, 1);
        QCOMPARE(server->requests.size(), 1);
    }

    // The server may have taken what it got.
    void aServerThatClosesWithoutAnAnswerGetsNoSecondRequest()
    {
        server->behaviours = {HttpsTestServer::close()};
        post();
        QTRY_COMPARE(outcome.value, 0);
        QCOMPARE(outcome.calls, 1);
        QCOMPARE(server->requests.size(), 1);
        QCOMPARE(server->requests.first().body, json);
    }

    void theProxyOfTheDesktopIsUsed()
    {
        QTcpServer proxy;
        QVERIFY(proxy.listen(QHostAddress::LocalHost));
        qputenv("https_proxy", "http://127.0.0.1:" + QByteArray::number(proxy.serverPort()));
        client->postJson(QUrl(u"https://telemetry.invalid/"_s), json, 5s, outcome.taker());
        QByteArray line;
        QTRY_VERIFY(proxy.hasPendingConnections());
        QTcpSocket *caller = proxy.nextPendingConnection();
        QTRY_VERIFY((line += caller->readAll()).contains('\n'));
        qunsetenv("https_proxy");
        QVERIFY2(line.startsWith("CONNECT telemetry.invalid:443 "), line.constData());
        caller->abort();
        QTRY_COMPARE(outcome.value, 0);
    }

    void anAnswerThatBreaksOffIsAFailure()
    {
        server->behaviours = {HttpsTestServer::brokenOffBody()};
        post();
        QTRY_COMPARE(outcome.value, 0);
    }

    void anEndlessAnswerIsCutShort()
    {
        server->behaviours = {HttpsTestServer::endlessBody()};
        post(60s);
        QTRY_COMPARE(outcome.value, 200);
        QCOMPARE(outcome.calls, 1);
    }

    void aServerThatIsDownIsAFailure()
    {
        server->stop();
        post();
        QTRY_COMPARE(outcome.value, 0);
    }

    void aCertificateNobodyTrustsIsAFailureAndGetsNoRequest()
    {
        client = std::make_unique<QtHttpsClient>();
        post();
        QTRY_COMPARE(outcome.value, 0);
        QCOMPARE(server->connections, 1);
        QVERIFY(server->requests.isEmpty());
    }

    void aTrustedCertificateOfAnotherHostIsAFailureAndGetsNoRequest()
    {
        const TestCertificate other(u"DNS:other.example"_s);
        server = std::make_unique<HttpsTestServer>(other);
        client = std::make_unique<QtHttpsClient>(other.trustingIt());
        post();
        QTRY_COMPARE(outcome.value, 0);
        QCOMPARE(server->connections, 1);
        QVERIFY(server->requests.isEmpty());
    }

    void anAddressWithoutTlsIsRefusedBeforeAnyConnection()
    {
        QTcpServer plain;
        QVERIFY(plain.listen(QHostAddress::LocalHost));
        client->postJson(QUrl(u"http://127.0.0.1:%1/"_s.arg(plain.serverPort())), json, 8s, outcome.taker());
        QCOMPARE(outcome.calls, 0);
        QTRY_COMPARE(outcome.value, 0);
        QVERIFY(!plain.waitForNewConnection(50));
    }

    void afterTheAnswerNoThreadOfTheNetworkIsLeft()
    {
        const qsizetype before = threads();
        post();
        QTRY_COMPARE(outcome.value, 200);
        QTRY_COMPARE(threads(), before);
    }

    void aDestroyedClientNeverAnswers()
    {
        server->behaviours = {HttpsTestServer::silence()};
        post(300ms);
        QTRY_COMPARE(server->requests.size(), 1);
        client.reset();
        QTest::qWait(400);
        QCOMPARE(outcome.calls, 0);
    }

private:
    void post(std::chrono::milliseconds timeLimit = 8s)
    {
        client->postJson(server->url(), json, timeLimit, outcome.taker());
    }

    [[nodiscard]] QByteArray host() const { return server->url().authority().toUtf8(); }

    const QByteArray json = R"({"events":[]})";
    std::unique_ptr<TestCertificate> certificate;
    std::unique_ptr<HttpsTestServer> server;
    std::unique_ptr<QtHttpsClient> client;
    Outcome outcome;
};

static const RegisteredTest<QtHttpsClientTests> registered;
#include "QtHttpsClientTests.moc"
