#include <VelmoraMac/Telemetry/TelemetryConfig.h>

#include <QTest>

#include <Fakes/FakeBundleInfo.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class TelemetryConfigTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void theEndpointIsTheBundlesElseTheBuiltInOneAndAlwaysHttps_data()
    {
        QTest::addColumn<QJsonValue>("bundled");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("endpoint");
        const QString host = u"events.example"_s;
        const QString builtIn = u"https://events.example/functions/v1/telemetry-events"_s;
        const QJsonValue missing(QJsonValue::Undefined);
        QTest::newRow("nothing at all") << missing << QString() << QString();
        QTest::newRow("only a built-in host") << missing << host << builtIn;
        QTest::newRow("bundled") << QJsonValue(u"https://a.example/e"_s) << host << u"https://a.example/e"_s;
        QTest::newRow("bundled, upper-case scheme")
            << QJsonValue(u"HTTPS://a.example:8443/e"_s) << host << u"https://a.example:8443/e"_s;
        QTest::newRow("bundled is no text") << QJsonValue(7) << host << builtIn;
        QTest::newRow("bundled is empty") << QJsonValue(QString()) << host << builtIn;
        QTest::newRow("bundled is no address") << QJsonValue(u"https://a b/"_s) << host << builtIn;
        QTest::newRow("bundled has no number as port")
            << QJsonValue(u"https://e.com:abc/"_s) << host << builtIn;
        QTest::newRow("bundled is plain HTTP") << QJsonValue(u"http://a.example/e"_s) << host << QString();
        QTest::newRow("bundled is another scheme") << QJsonValue(u"ftp://a.example/e"_s) << host << QString();
        QTest::newRow("bundled has no scheme") << QJsonValue(u"a.example/e"_s) << host << QString();
        QTest::newRow("bundled has no host") << QJsonValue(u"https://"_s) << host << QString();
    }

    void theEndpointIsTheBundlesElseTheBuiltInOneAndAlwaysHttps()
    {
        QFETCH(QJsonValue, bundled);
        QFETCH(QString, host);
        QFETCH(QString, endpoint);
        FakeBundleInfo bundle;
        if (!bundled.isUndefined())
            bundle.values.insert(u"VelmoraTelemetryEndpoint"_s, bundled);

        const std::optional<QUrl> url = TelemetryConfig::endpointURL(bundle, host);
        QCOMPARE(url ? url->toString() : QString(), endpoint);
    }
};

static const RegisteredTest<TelemetryConfigTests> registered;
#include "TelemetryConfigTests.moc"
