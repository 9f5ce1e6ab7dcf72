#include <VelmoraMac/Texts/LocalizedStrings.h>

#include <QSignalSpy>
#include <QTest>

#include <Fakes/FakeServices.h>
#include <Fakes/FakeSystemLanguage.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

CleaningResult resultOf(const QString &link, const QStringList &removed)
{
    return {link + u"?tracked"_s, link, removed};
}

} // namespace

class AppStateTests : public QObject {
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
        const AppState state(fakes->services());

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
        QCOMPARE(AppState(fakes->services()).language(), AppLanguage::german);
    }

    void loadingSendsNoEventAndLeavesTheLoginItemAlone()
    {
        fakes->defaults.place(u"autoCleanEnabled"_s, false);
        fakes->defaults.place(u"launchAtLoginEnabled"_s, true);
        fakes->defaults.place(u"ignoredDomainsText"_s, u"a.com"_s);
        fakes->defaults.place(u"language"_s, u"german"_s);

        const AppState state(fakes->services());

        QVERIFY(fakes->telemetry.events.isEmpty());
        QVERIFY(fakes->loginItem.calls.isEmpty());
        QVERIFY(!state.autoCleanEnabled());
        QVERIFY(state.launchAtLoginEnabled());
    }

    void everySettingSurvivesARestart()
    {
        {
            AppState state(fakes->services());
            state.setAutoCleanEnabled(false);
            state.setLaunchAtLoginEnabled(true);
            state.setIgnoredDomainsText(u"a.com\nb.com"_s);
            state.setAskBeforeCleaningEnabled(true);
            state.setTelemetryEnabled(false);
            state.setLanguage(AppLanguage::system);
            state.setAppTheme(VelmoraTheme::ocean);
            state.setActiveAppTab(AppTab::history);
            state.record(resultOf(u"https://a.example/"_s, {u"si"_s, u"gclid"_s}));
        }
        const AppState state(fakes->services());
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

    void aStoredValueOfAnotherTypeGivesTheDefaultAndStays()
    {
        fakes->defaults.place(u"autoCleanEnabled"_s, u"false"_s);
        fakes->defaults.place(u"launchAtLoginEnabled"_s, qint64(7));
        fakes->defaults.place(u"ignoredDomainsText"_s, true);
        fakes->defaults.place(u"appTheme"_s, u"neon"_s);
        fakes->defaults.place(u"totalCleaned"_s, u"many"_s);

        const AppState state(fakes->services());

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
        QCOMPARE(AppState(fakes->services()).language(), taken);
    }

    // Setters

    void pausingAndResumingAreReportedButNotTheSameValueAgain()
    {
        AppState state(fakes->services());
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
        AppState state(fakes->services());
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
        AppState state(fakes->services());
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
        AppState state(fakes->services());
        state.setIgnoredDomainsText(before);
        fakes->telemetry.events.clear();

        state.setIgnoredDomainsText(after);

        QCOMPARE(fakes->telemetry.names(), event.isEmpty() ? QStringList() : QStringList(event));
        QCOMPARE(fakes->defaults.string(u"ignoredDomainsText"), after);
    }

    // Counters

    void aCleaningOfSeveralLinksCountsOnceAndItsParametersEach()
    {
        AppState state(fakes->services());
        state.record(resultOf(u"https://a.example https://b.example"_s, {u"si"_s, u"gclid"_s, u"si"_s}));

        QCOMPARE(state.totalCleaned(), 1);
        QCOMPARE(state.cleanedToday(), 1);
        QCOMPARE(state.totalTrackersRemoved(), 3);
        QCOMPARE(state.historyEntries().size(), 1);
        QCOMPARE(state.historyEntries().first().removedCount, 3);
        QCOMPARE(state.historyEntries().first().removedParameterNames,
                 QStringList({u"si"_s, u"gclid"_s, u"si"_s}));
        QCOMPARE(fakes->defaults.integer(u"totalCleaned"), 1);
        QCOMPARE(fakes->defaults.integer(u"totalTrackersRemoved"), 3);
        QCOMPARE(fakes->defaults.integer(u"cleanedToday"), 1);
    }

    void aCleaningIsReportedWithItsBucketOnly()
    {
        AppState state(fakes->services());
        state.record(resultOf(u"https://secret.example/"_s, {u"si"_s, u"gclid"_s, u"fbclid"_s}));

        QCOMPARE(fakes->telemetry.names(), QStringList(u"link_cleaned"_s));
        QCOMPARE(fakes->telemetry.events.first().extraProperties,
                 TelemetrySink::Properties({{u"removed_parameter_count_bucket"_s, u"3-5"_s}}));
    }

    void theFirstCleaningOfADayStartsItsCountAgain()
    {
        fakes->defaults.place(u"todayKey"_s, u"2026-03-06"_s);
        fakes->defaults.place(u"cleanedToday"_s, qint64(41));
        AppState state(fakes->services());
        QCOMPARE(state.cleanedToday(), 0);
        QCOMPARE(fakes->defaults.integer(u"cleanedToday"), 0);

        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(state.cleanedToday(), 1);
    }

    void yesterdaysCountStaysOnScreenUntilTheNextCleaning()
    {
        AppState state(fakes->services());
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        state.record(resultOf(u"https://b.example/"_s, {u"si"_s}));

        fakes->time.pass(std::chrono::hours(24));
        QCOMPARE(state.cleanedToday(), 2);
        state.record(resultOf(u"https://c.example/"_s, {u"si"_s}));
        QCOMPARE(state.cleanedToday(), 1);
        QCOMPARE(fakes->defaults.string(u"todayKey"), u"2026-03-08"_s);
    }

    void theDayIsTheOneOnTheWall()
    {
        const QDateTime lateInUtc(QDate(2026, 3, 7), QTime(23, 30), Qt::UTC);
        fakes->time.wallClock().set(lateInUtc.toOffsetFromUtc(3600));
        const AppState state(fakes->services());
        QCOMPARE(fakes->defaults.string(u"todayKey"), u"2026-03-08"_s);
    }

    void theCountOfTheDayIsReadFromTheStore()
    {
        AppState state(fakes->services());
        fakes->defaults.place(u"cleanedToday"_s, qint64(9));
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(state.cleanedToday(), 10);
    }

    void everyCleaningIsAnnouncedAlsoWhenItEqualsTheLast()
    {
        AppState state(fakes->services());
        const QSignalSpy results(&state, &AppState::lastResultChanged);
        const QSignalSpy moments(&state, &AppState::lastCleanedAtChanged);

        const CleaningResult result = resultOf(u"https://a.example/"_s, {u"si"_s});
        state.record(result);
        state.record(result);

        QCOMPARE(results.count(), 2);
        QCOMPARE(moments.count(), 2);
        QCOMPARE(state.lastResult(), result);
        QVERIFY(state.hasLastResult());
        QCOMPARE(state.lastCleanedAt(), fakes->time.wallClock().now());
    }

    // History and its actions

    void theThirtyFirstCleaningDropsTheOldestEntry()
    {
        AppState state(fakes->services());
        for (int i = 1; i <= 31; ++i)
            state.record(resultOf(u"https://example.org/%1"_s.arg(i), {u"si"_s}));

        QCOMPARE(state.historyEntries().size(), 30);
        QCOMPARE(state.historyEntries().first().cleanedText, u"https://example.org/31"_s);
        QCOMPARE(state.historyEntries().last().cleanedText, u"https://example.org/2"_s);
        const auto stored = historyFromJson(*fakes->defaults.data(u"historyEntries"));
        QCOMPARE(stored.value(), state.historyEntries());
    }

    void theSameLinkTwiceGivesTwoEntries()
    {
        AppState state(fakes->services());
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(state.historyEntries().size(), 2);
        QVERIFY(state.historyEntries().at(0).id != state.historyEntries().at(1).id);
    }

    void clearingTheHistoryRemovesItsKeyAndKeepsTheCounters()
    {
        AppState state(fakes->services());
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));

        state.clearHistory();
        QVERIFY(state.historyEntries().isEmpty());
        QVERIFY(!fakes->defaults.keys().contains(u"historyEntries"_s));
        QCOMPARE(state.totalCleaned(), 1);

        state.record(resultOf(u"https://b.example/"_s, {u"si"_s}));
        QCOMPARE(historyFromJson(*fakes->defaults.data(u"historyEntries"))->size(), 1);
    }

    void aDamagedHistoryReadsAsEmptyAndIsReplacedByTheNextCleaning()
    {
        fakes->defaults.place(u"historyEntries"_s, QByteArray("[{\"id\":1}]"));
        AppState state(fakes->services());
        QVERIFY(state.historyEntries().isEmpty());
        QCOMPARE(fakes->defaults.data(u"historyEntries"), QByteArray("[{\"id\":1}]"));

        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(historyFromJson(*fakes->defaults.data(u"historyEntries"))->size(), 1);
    }

    void copyingAgainAndRestoringOnlyWriteTheText()
    {
        AppState state(fakes->services());
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        const CleanHistoryEntry entry = state.historyEntries().first();
        fakes->telemetry.events.clear();
        fakes->defaults.writes.clear();

        state.copyCleanedLink(entry);
        QCOMPARE(fakes->pasteboard.contents().value(), "https://a.example/");
        state.restoreOriginalLink(entry);
        QCOMPARE(fakes->pasteboard.contents().value(), "https://a.example/?tracked");

        QCOMPARE(state.totalCleaned(), 1);
        QCOMPARE(state.historyEntries().size(), 1);
        QVERIFY(fakes->telemetry.events.isEmpty());
        QVERIFY(fakes->defaults.writes.isEmpty());
    }

    // Ignoring the last domain

    void ignoringTheLastDomainTwiceAddsItOnce()
    {
        AppState state(fakes->services());
        state.setIgnoredDomainsText(u"other.example"_s);
        state.record(resultOf(u"see https://www.Shop.example:8080/?a=1 and https://b.example/"_s, {u"si"_s}));
        fakes->telemetry.events.clear();

        state.addIgnoredHostFromLastResult();
        state.addIgnoredHostFromLastResult();

        QCOMPARE(state.ignoredDomainsText(), u"other.example\nwww.shop.example"_s);
        QCOMPARE(fakes->telemetry.names(), QStringList(u"ignored_domain_added"_s));
        QCOMPARE(fakes->defaults.string(u"ignoredDomainsText"), state.ignoredDomainsText());
        QVERIFY(state.ignoredHosts().contains("www.shop.example"));
    }

    void theLastDomainIsAppendedToBlanksDirectly()
    {
        AppState state(fakes->services());
        state.setIgnoredDomainsText(u"   "_s);
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        state.addIgnoredHostFromLastResult();
        QCOMPARE(state.ignoredDomainsText(), u"   a.example"_s);
        QCOMPARE(state.ignoredHosts(), std::set<std::string>{"a.example"});
    }

    void linksWithoutAHostArePassedOver()
    {
        AppState state(fakes->services());
        state.record(resultOf(u"mailto:me@mail.example then https://a.example/"_s, {u"si"_s}));
        state.addIgnoredHostFromLastResult();
        QCOMPARE(state.ignoredDomainsText(), u"a.example"_s);
    }

    void withoutALastResultOrAHostNothingIsIgnored()
    {
        AppState state(fakes->services());
        state.addIgnoredHostFromLastResult();
        state.record(resultOf(u"no link here"_s, {u"si"_s}));
        fakes->defaults.writes.clear();
        state.addIgnoredHostFromLastResult();
        QCOMPARE(state.ignoredDomainsText(), QString());
        QVERIFY(fakes->defaults.writes.isEmpty());
    }

    // Start at login and messages

    void startAtLoginIsRegisteredAndUnregisteredOnEveryAssignment()
    {
        fakes->bundle.values.insert(u"CFBundleIdentifier"_s, u"app.velmora.Velmora"_s);
        AppState state(fakes->services());

        state.setLaunchAtLoginEnabled(true);
        state.setLaunchAtLoginEnabled(true);
        state.setLaunchAtLoginEnabled(false);

        QCOMPARE(fakes->loginItem.calls, QStringList({u"register"_s, u"register"_s, u"unregister"_s}));
        QCOMPARE(state.lastError(), QString());
    }

    void startAtLoginWithoutABundleIsExplained()
    {
        AppState state(fakes->services());
        state.setLaunchAtLoginEnabled(true);
        QCOMPARE(state.lastError(), u"Start at Login works in the bundled app build."_s);
        state.setLanguage(AppLanguage::german);
        QCOMPARE(state.lastError(), u"Start at Login works in the bundled app build."_s);
        state.setLaunchAtLoginEnabled(false);
        QCOMPARE(state.lastError(), u"Beim Login starten funktioniert im gebündelten App-Build."_s);
        QVERIFY(fakes->loginItem.calls.isEmpty());
    }

    void aRefusedStartAtLoginKeepsTheChoiceAndASuccessClearsTheMessage()
    {
        fakes->bundle.values.insert(u"CFBundleIdentifier"_s, u"app.velmora.Velmora"_s);
        AppState state(fakes->services());
        fakes->loginItem.agrees = false;

        state.setLaunchAtLoginEnabled(true);
        QCOMPARE(state.lastError(), u"Start at Login could not be updated in this build."_s);
        QVERIFY(state.launchAtLoginEnabled());
        QCOMPARE(fakes->defaults.boolean(u"launchAtLoginEnabled"), true);

        fakes->loginItem.agrees = true;
        state.setLaunchAtLoginEnabled(true);
        QCOMPARE(state.lastError(), QString());
    }

    void turningStartAtLoginOffAfterAFailureClearsTheMessageToo()
    {
        fakes->bundle.values.insert(u"CFBundleIdentifier"_s, u"app.velmora.Velmora"_s);
        AppState state(fakes->services());
        fakes->loginItem.agrees = false;
        state.setLaunchAtLoginEnabled(true);

        fakes->loginItem.agrees = true;
        state.setLaunchAtLoginEnabled(false);

        QCOMPARE(state.lastError(), QString());
        QCOMPARE(fakes->loginItem.calls, QStringList({u"register"_s, u"unregister"_s}));
    }

    void aLateRefusalOfStartAtLoginIsReportedAndKeepsTheChoice()
    {
        fakes->bundle.values.insert(u"CFBundleIdentifier"_s, u"app.velmora.Velmora"_s);
        AppState state(fakes->services());
        state.setLaunchAtLoginEnabled(true);
        QCOMPARE(state.lastError(), QString());

        fakes->loginItem.refuseLate();

        QCOMPARE(state.lastError(), u"Start at Login could not be updated in this build."_s);
        QVERIFY(state.launchAtLoginEnabled());
    }

    void cleaningsAndHistoryActionsClearTheMessage()
    {
        AppState state(fakes->services());
        state.setLaunchAtLoginEnabled(true);
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(state.lastError(), QString());

        state.setLaunchAtLoginEnabled(true);
        state.copyCleanedLink(state.historyEntries().first());
        QCOMPARE(state.lastError(), QString());
    }

    void troubleWithTheStoreReachesTheUserInTheirLanguage()
    {
        fakes->defaults.place(u"language"_s, u"german"_s);
        fakes->defaults.fail(DefaultsStore::Problem::setAside);
        AppState state(fakes->services());
        QVERIFY(state.lastError().startsWith(u"Die Einstellungsdatei war beschädigt."_s));

        fakes->defaults.failsWrites = true;
        state.setLanguage(AppLanguage::english);
        QVERIFY(state.lastError().startsWith(u"Settings cannot be saved"_s));
        QCOMPARE(state.language(), AppLanguage::english);
    }

    void aSessionWithoutAClipboardIsNamedInTheSettings()
    {
        QVERIFY(AppState(fakes->services()).lastError().isEmpty());
        fakes->pasteboard.reachable = false;
        fakes->defaults.setString(u"language", u"german"_s);
        QVERIFY(AppState(fakes->services()).lastError().startsWith(u"Velmora erreicht die Zwischenablage"_s));
    }

    void aCleaningThatCannotBeSavedSaysSo()
    {
        AppState state(fakes->services());
        fakes->defaults.failsWrites = true;
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QVERIFY(state.lastError().startsWith(u"Settings cannot be saved"_s));
        QCOMPARE(state.totalCleaned(), 1);
    }

private:
    FakeSystemLanguage language;
    std::unique_ptr<FakeServices> fakes;
};

QTEST_GUILESS_MAIN(AppStateTests)
#include "AppStateTests.moc"
