#include <VelmoraMac/Telemetry/TelemetryProperties.h>

#include <QTest>

#include <Fakes/FakeBundleInfo.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class TelemetryPropertiesTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void everyEventHasItsWireName()
    {
        using enum TelemetryEventName;
        QStringList names;
        for (int event = static_cast<int>(appFirstLaunch); event <= static_cast<int>(languageChanged);
             ++event)
            names.append(wireName(static_cast<TelemetryEventName>(event)));
        QCOMPARE(names,
                 QStringList({u"app_first_launch"_s, u"app_opened"_s, u"app_quit"_s, u"menu_popover_opened"_s,
                              u"settings_opened"_s, u"cleaning_enabled"_s, u"cleaning_disabled"_s,
                              u"link_cleaned"_s, u"cleaning_undo_used"_s, u"ignored_domain_added"_s,
                              u"ignored_domain_removed"_s, u"theme_changed"_s, u"language_changed"_s}));
    }

    void thePropertiesNameTheBuildAndTheSystem()
    {
        FakeBundleInfo bundle;
        bundle.values = {{u"CFBundleShortVersionString"_s, u"1.2.3"_s}, {u"CFBundleVersion"_s, u"77"_s}};
        TelemetrySink::Properties properties = programProperties(bundle);
        QVERIFY(properties.take(u"macos_major_version"_s).toLongLong() > 0);
        QCOMPARE(properties, TelemetrySink::Properties({{u"app_version"_s, u"1.2.3"_s},
                                                        {u"build_number"_s, u"77"_s},
                                                        {u"architecture"_s, u"arm64"_s}}));
    }

    void versionsThatAreMissingOrNoTextsHaveFixedValues()
    {
        FakeBundleInfo bundle;
        QCOMPARE(programProperties(bundle)[u"app_version"_s], u"0.1.9"_s);
        QCOMPARE(programProperties(bundle)[u"build_number"_s], u"10"_s);
        bundle.values = {{u"CFBundleShortVersionString"_s, 2}, {u"CFBundleVersion"_s, true}};
        QCOMPARE(programProperties(bundle)[u"app_version"_s], u"0.1.9"_s);
        QCOMPARE(programProperties(bundle)[u"build_number"_s], u"10"_s);
    }

    void theMajorVersionIsAPlainNumber_data()
    {
        QTest::addColumn<QString>("system");
        QTest::addColumn<QString>("kernel");
        QTest::addColumn<QString>("major");
        QTest::newRow("whole number") << u"12"_s << u"6.1.0-18-amd64"_s << u"12"_s;
        QTest::newRow("with a minor one") << u"22.04"_s << u"6.1.0"_s << u"22"_s;
        QTest::newRow("a rolling system has only its kernel") << u"unknown"_s << u"6.10.3-arch1"_s << u"6"_s;
        QTest::newRow("no system") << QString() << u"5.15"_s << u"5"_s;
        QTest::newRow("neither") << u"unknown"_s << QString() << u"0"_s;
    }

    void theMajorVersionIsAPlainNumber()
    {
        QFETCH(QString, system);
        QFETCH(QString, kernel);
        QFETCH(QString, major);
        QCOMPARE(majorVersion(system, kernel), major);
    }
};

static const RegisteredTest<TelemetryPropertiesTests> registered;
#include "TelemetryPropertiesTests.moc"
