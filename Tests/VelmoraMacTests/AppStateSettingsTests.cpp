#include <VelmoraMac/Texts/LocalizedStrings.h>

#include <QMetaEnum>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>

#include <Fakes/FakeServices.h>
#include <Fakes/FakeSystemLanguage.h>
#include <Runner/RegisteredTest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

QVariant otherThan(const QVariant &value, const QMetaProperty &property)
{
    if (property.isEnumType()) {
        const QMetaEnum values = property.enumerator();
        const int next = (value.toInt() + 1) % values.keyCount();
        QVariant other(next);
        other.convert(value.metaType());
        return other;
    }
    if (value.metaType() == QMetaType::fromType<bool>())
        return !value.toBool();
    return value.toString() + u"a.com"_s;
}

} // namespace

// What the state loads, keeps and reports of the user's settings.
class AppStateSettingsTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        LocalizedStrings::setSystemLanguage(&language);
        language.languageCode = u"en"_s;
        fakes = std::make_unique<FakeServices>();
    }

    void cleanup() { LocalizedStrings::setSystemLanguage(nullptr); }

    // Loading

    void aFreshStoreGivesTheDefaultsAndThenHoldsOnlyTheDay()
    {
        const AppState state(fakes->dependencies());

        QCOMPARE(state.activeAppTab(), AppTab::general);
        QVERIFY(state.autoCleanEnabled());
        QVERIFY(!state.askBeforeCleaningEnabled());
        QVERIFY(state.telemetryEnabled());
        QVERIFY(!state.launchAtLoginEnabled());
        QCOMPARE(state.appTheme(), VelmoraTheme::graphite);
        QCOMPARE(state.language(), AppLanguage::english);
        QCOMPARE(state.totalCleaned(), 0);
        QCOMPARE(state.totalTrackersRemoved(), 0);
        QCOMPARE(state.cleanedToday(), 0);
        QCOMPARE(state.ignoredDomainsText(), QString());
        QVERIFY(state.ignoredHosts().empty());
        QVERIFY(state.historyEntries().isEmpty());
        QVERIFY(!state.hasLastResult());
        QVERIFY(!state.lastCleanedAt().isValid());
        QCOMPARE(state.lastError(), QString());
        QCOMPARE(fakes->defaults.keys(), QStringList({u"cleanedToday"_s, u"todayKey"_s}));
        QCOMPARE(fakes->defaults.string(u"todayKey"), u"2026-03-07"_s);
        QCOMPARE(fakes->defaults.integer(u"cleanedToday"), 0);
    }

    void aFreshStoreOnAGermanSystemSpeaksGerman()
    {
        language.languageCode = u"de"_s;
        QCOMPARE(AppState(fakes->dependencies()).language(), AppLanguage::german);
    }

    void loadingSendsNoEventAndLeavesTheLoginItemAlone()
    {
        fakes->defaults.place(u"autoCleanEnabled"_s, false);
        fakes->defaults.place(u"launchAtLoginEnabled"_s, true);
        fakes->defaults.place(u"ignoredDomainsText"_s, u"a.com"_s);
        fakes->defaults.place(u"language"_s, u"german"_s);

        const AppState state(fakes->dependencies());

        QVERIFY(fakes->telemetry.events.isEmpty());
        QVERIFY(fakes->loginItem.calls.isEmpty());
        QVERIFY(!state.autoCleanEnabled());
        QVERIFY(state.launchAtLoginEnabled());
    }

    void everySettingSurvivesARestart()
    {
        {
            AppState state(fakes->dependencies());
            state.setAutoCleanEnabled(false);
            state.setLaunchAtLoginEnabled(true);
            state.setIgnoredDomainsText(u"a.com\nb.com"_s);
            state.setAskBeforeCleaningEnabled(true);
            state.setTelemetryEnabled(false);
            state.setLanguage(AppLanguage::system);
            state.setAppTheme(VelmoraTheme::ocean);
            state.setActiveAppTab(AppTab::history);
            state.record({u"https://a.example/?si=1"_s, u"https://a.example/"_s, {u"si"_s, u"gclid"_s}});
        }
        const AppState state(fakes->dependencies());
        QVERIFY(!state.autoCleanEnabled());
        QVERIFY(state.launchAtLoginEnabled());
        QCOMPARE(state.ignoredDomainsText(), u"a.com\nb.com"_s);
        QVERIFY(state.askBeforeCleaningEnabled());
        QVERIFY(!state.telemetryEnabled());
        QCOMPARE(state.language(), AppLanguage::system);
        QCOMPARE(state.appTheme(), VelmoraTheme::ocean);
        QCOMPARE(state.activeAppTab(), AppTab::general);
        QCOMPARE(state.totalCleaned(), 1);
        QCOMPARE(state.totalTrackersRemoved(), 2);
        QCOMPARE(state.cleanedToday(), 1);
        QCOMPARE(state.historyEntries().size(), 1);
        QVERIFY(!state.hasLastResult());
    }

    // Also one that is added tomorrow. Which tab is open is no setting.
    void whatCanBeAssignedSurvivesARestart()
    {
        QMap<QByteArray, QVariant> assigned;
        {
            AppState state(fakes->dependencies());
            const QMetaObject &type = AppState::staticMetaObject;
            for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
                const QMetaProperty property = type.property(i);
                if (!property.isWritable() || property.name() == QByteArray("activeAppTab"))
                    continue;
                const QVariant value = otherThan(property.read(&state), property);
                QVERIFY2(property.write(&state, value), property.name());
                assigned.insert(property.name(), property.read(&state));
                QVERIFY2(assigned.value(property.name()) == value, property.name());
            }
        }
        QVERIFY(assigned.size() >= 7);
        const AppState state(fakes->dependencies());
        for (auto setting = assigned.cbegin(); setting != assigned.cend(); ++setting)
            QVERIFY2(state.property(setting.key().constData()) == setting.value(), setting.key().constData());
    }

    void aStoredValueOfAnotherTypeGivesTheDefaultAndStays()
    {
        fakes->defaults.place(u"autoCleanEnabled"_s, u"false"_s);
        fakes->defaults.place(u"launchAtLoginEnabled"_s, qint64(7));
        fakes->defaults.place(u"ignoredDomainsText"_s, true);
        fakes->defaults.place(u"appTheme"_s, u"neon"_s);
        fakes->defaults.place(u"totalCleaned"_s, u"many"_s);

        const AppState state(fakes->dependencies());

        QVERIFY(state.autoCleanEnabled());
        QVERIFY(!state.launchAtLoginEnabled());
        QCOMPARE(state.ignoredDomainsText(), QString());
        QCOMPARE(state.appTheme(), VelmoraTheme::graphite);
        QCOMPARE(state.totalCleaned(), 0);
        QCOMPARE(fakes->defaults.string(u"appTheme"), u"neon"_s);
        QCOMPARE(fakes->defaults.string(u"autoCleanEnabled"), u"false"_s);
    }

    void aStoredLanguageIsTakenOnlyWhenItIsOneOfTheThree_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<AppLanguage>("taken");
        QTest::newRow("system") << u"system"_s << AppLanguage::system;
        QTest::newRow("english") << u"english"_s << AppLanguage::english;
        QTest::newRow("german") << u"german"_s << AppLanguage::german;
        QTest::newRow("unknown") << u"french"_s << AppLanguage::german;
        QTest::newRow("another case") << u"English"_s << AppLanguage::german;
        QTest::newRow("scoped") << u"AppLanguage::english"_s << AppLanguage::german;
        QTest::newRow("empty") << QString() << AppLanguage::german;
    }

    void aStoredLanguageIsTakenOnlyWhenItIsOneOfTheThree()
    {
        QFETCH(QString, stored);
        QFETCH(AppLanguage, taken);
        language.languageCode = u"de"_s;
        fakes->defaults.place(u"language"_s, stored);
        QCOMPARE(AppState(fakes->dependencies()).language(), taken);
    }

    // Setters

    void pausingAndResumingAreReportedButNotTheSameValueAgain()
    {
        AppState state(fakes->dependencies());
        const QSignalSpy changed(&state, &AppState::autoCleanEnabledChanged);
        fakes->defaults.writes.clear();

        state.setAutoCleanEnabled(true);
        QCOMPARE(fakes->defaults.writes, QStringList(u"autoCleanEnabled"_s));
        QCOMPARE(changed.count(), 0);
        QVERIFY(fakes->telemetry.events.isEmpty());

        state.setAutoCleanEnabled(false);
        state.setAutoCleanEnabled(true);
        QCOMPARE(changed.count(), 2);
        QCOMPARE(fakes->telemetry.names(), QStringList({u"cleaning_disabled"_s, u"cleaning_enabled"_s}));
        QCOMPARE(fakes->defaults.writes.size(), 3);
    }

    void languageAndThemeAreWrittenAlwaysAndReportedWhenTheyChange()
    {
        AppState state(fakes->dependencies());
        fakes->defaults.writes.clear();

        state.setLanguage(AppLanguage::english);
        state.setAppTheme(VelmoraTheme::graphite);
        QCOMPARE(fakes->defaults.writes, QStringList({u"language"_s, u"appTheme"_s}));
        QVERIFY(fakes->telemetry.events.isEmpty());

        state.setLanguage(AppLanguage::german);
        state.setAppTheme(VelmoraTheme::aurora);
        QCOMPARE(fakes->telemetry.names(), QStringList({u"language_changed"_s, u"theme_changed"_s}));
        QCOMPARE(fakes->defaults.string(u"language"), u"german"_s);
        QCOMPARE(fakes->defaults.string(u"appTheme"), u"aurora"_s);
    }

    void askFirstTelemetryAndTabReportNothing()
    {
        AppState state(fakes->dependencies());
        fakes->defaults.writes.clear();

        state.setAskBeforeCleaningEnabled(true);
        state.setTelemetryEnabled(false);
        state.setActiveAppTab(AppTab::cleaning);

        QVERIFY(fakes->telemetry.events.isEmpty());
        QCOMPARE(fakes->defaults.writes, QStringList({u"askBeforeCleaningEnabled"_s, u"telemetryEnabled"_s}));
    }

    void onlyTheNumberOfIgnoredLinesIsReported_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("event");
        QTest::newRow("a second line") << u"a.com"_s << u"a.com\nb.com"_s << u"ignored_domain_added"_s;
        QTest::newRow("a line less") << u"a.com\nb.com"_s << u"b.com"_s << u"ignored_domain_removed"_s;
        QTest::newRow("another domain") << u"a.com"_s << u"b.com"_s << QString();
        QTest::newRow("an empty line") << u"a.com"_s << u"a.com\n\n  \n"_s << QString();
        QTest::newRow("a zero-width space") << u"a.com"_s << u"a.com\n\u200b"_s << QString();
        QTest::newRow("everything goes")
            << u"a.com\nb.com\nc.com"_s << QString() << u"ignored_domain_removed"_s;
        QTest::newRow("a duplicate counts") << u"a.com"_s << u"a.com\na.com"_s << u"ignored_domain_added"_s;
    }

    void onlyTheNumberOfIgnoredLinesIsReported()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        QFETCH(QString, event);
        AppState state(fakes->dependencies());
        state.setIgnoredDomainsText(before);
        fakes->telemetry.events.clear();

        state.setIgnoredDomainsText(after);

        QCOMPARE(fakes->telemetry.names(), event.isEmpty() ? QStringList() : QStringList(event));
        QCOMPARE(fakes->defaults.string(u"ignoredDomainsText"), after);
    }

    // What events say about the settings

    void theTelemetryPropertiesAreTheFourOfTheStateAsItIsNow()
    {
        fakes->defaults.place(u"totalCleaned"_s, qint64(101));
        AppState state(fakes->dependencies());
        state.setLanguage(AppLanguage::system);
        state.setAppTheme(VelmoraTheme::ocean);
        QCOMPARE(state.telemetryProperties(),
                 TelemetrySink::Properties({{u"app_language"_s, u"system"_s},
                                            {u"cleaning_mode"_s, u"auto"_s},
                                            {u"theme"_s, u"ocean"_s},
                                            {u"cleaned_count_bucket"_s, u"100+"_s}}));
    }

    void theCleaningModeIsManualWheneverCleaningIsPaused()
    {
        AppState state(fakes->dependencies());
        const auto mode = [&] { return state.telemetryProperties()[u"cleaning_mode"_s]; };
        QCOMPARE(mode(), u"auto"_s);
        state.setAskBeforeCleaningEnabled(true);
        QCOMPARE(mode(), u"ask"_s);
        state.setAutoCleanEnabled(false);
        QCOMPARE(mode(), u"manual"_s);
        state.setAskBeforeCleaningEnabled(false);
        QCOMPARE(mode(), u"manual"_s);
    }

private:
    FakeSystemLanguage language;
    std::unique_ptr<FakeServices> fakes;
};

static const RegisteredTest<AppStateSettingsTests> registered;
#include "AppStateSettingsTests.moc"
