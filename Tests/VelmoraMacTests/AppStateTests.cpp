#include <VelmoraMac/Texts/LocalizedStrings.h>

#include <QSignalSpy>
#include <QTest>

#include <Fakes/FakeServices.h>
#include <Fakes/FakeSystemLanguage.h>
#include <Fakes/UtcTime.h>
#include <Runner/RegisteredTest.h>

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

    // Counters

    void aCleaningOfSeveralLinksCountsOnceAndItsParametersEach()
    {
        AppState state(fakes->dependencies());
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
        AppState state(fakes->dependencies());
        state.record(resultOf(u"https://secret.example/"_s, {u"si"_s, u"gclid"_s, u"fbclid"_s}));

        QCOMPARE(fakes->telemetry.names(), QStringList(u"link_cleaned"_s));
        QCOMPARE(fakes->telemetry.events.first().extraProperties,
                 TelemetrySink::Properties({{u"removed_parameter_count_bucket"_s, u"3-5"_s}}));
    }

    void theFirstCleaningOfADayStartsItsCountAgain()
    {
        fakes->defaults.place(u"todayKey"_s, u"2026-03-06"_s);
        fakes->defaults.place(u"cleanedToday"_s, qint64(41));
        AppState state(fakes->dependencies());
        QCOMPARE(state.cleanedToday(), 0);
        QCOMPARE(fakes->defaults.integer(u"cleanedToday"), 0);
        QCOMPARE(fakes->defaults.writes, QStringList({u"todayKey"_s, u"cleanedToday"_s}));

        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(state.cleanedToday(), 1);
    }

    void yesterdaysCountStaysOnScreenUntilTheNextCleaning()
    {
        AppState state(fakes->dependencies());
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
        const QDateTime lateInUtc = utcTime(QDate(2026, 3, 7), QTime(23, 30));
        fakes->time.wallClock().set(lateInUtc.toOffsetFromUtc(3600));
        const AppState state(fakes->dependencies());
        QCOMPARE(fakes->defaults.string(u"todayKey"), u"2026-03-08"_s);
    }

    void theCountOfTheDayIsReadFromTheStore()
    {
        AppState state(fakes->dependencies());
        fakes->defaults.place(u"cleanedToday"_s, qint64(9));
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(state.cleanedToday(), 10);
    }

    void everyCleaningIsAnnouncedAlsoWhenItEqualsTheLast()
    {
        AppState state(fakes->dependencies());
        const QSignalSpy results(&state, &AppState::lastResultChanged);
        const QSignalSpy moments(&state, &AppState::lastCleanedAtChanged);
        connect(&state, &AppState::lastCleanedAtChanged, this,
                [&] { QCOMPARE(results.count(), moments.count()); }); // The result is announced first.

        const CleaningResult result = resultOf(u"https://a.example/"_s, {u"si"_s});
        state.record(result);
        state.record(result);

        QCOMPARE(results.count(), 2);
        QCOMPARE(moments.count(), 2);
        QCOMPARE(state.lastResult(), result);
        QVERIFY(state.hasLastResult());
        QCOMPARE(state.lastCleanedAt(), fakes->time.wallClock().now());
    }

    void aCleaningIsReportedWhenAllObserversKnowIt()
    {
        AppState state(fakes->dependencies());
        const QSignalSpy results(&state, &AppState::lastResultChanged);
        const QSignalSpy moments(&state, &AppState::lastCleanedAtChanged);
        QList<qsizetype> announced;
        fakes->telemetry.heard = [&] { announced << results.count() << moments.count(); };
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(announced, (QList<qsizetype>{1, 1}));
    }

    // History and its actions

    void theThirtyFirstCleaningDropsTheOldestEntry()
    {
        AppState state(fakes->dependencies());
        for (int i = 1; i <= 31; ++i)
            state.record(resultOf(u"https://example.org/%1"_s.arg(i), {u"si"_s}));

        QCOMPARE(state.historyEntries().size(), 30);
        QCOMPARE(state.historyEntries().first().cleanedText, u"https://example.org/31"_s);
        QCOMPARE(state.historyEntries().last().cleanedText, u"https://example.org/2"_s);
        const auto stored = historyFromJson(*fakes->defaults.data(u"historyEntries"));
        QCOMPARE(stored.value(), state.historyEntries());
    }

    void aCleaningIsStoredAsOneAndInItsOrder()
    {
        AppState state(fakes->dependencies());
        fakes->defaults.writes.clear();
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        const QStringList order = {u"totalCleaned"_s, u"totalTrackersRemoved"_s, u"todayKey"_s,
                                   u"cleanedToday"_s, u"historyEntries"_s};
        QCOMPARE(fakes->defaults.writes, order);
        QCOMPARE(fakes->defaults.groups, QList<QStringList>{order});
    }

    void aTextThatIsNotKeptWholeIsNotWritten()
    {
        AppState state(fakes->dependencies());
        CleanHistoryEntry entry;
        entry.originalText = u"beginn"_s;
        entry.originalBytes = 9'000'000;
        entry.cleanedText = u"whole"_s;
        state.restoreOriginalLink(entry);
        QVERIFY(fakes->pasteboard.written.empty());
        QVERIFY(state.lastError().contains(u"too long"_s));
        state.copyCleanedLink(entry);
        QCOMPARE(fakes->pasteboard.written, std::vector<std::string>{"whole"});
        QCOMPARE(state.lastError(), QString());
        entry.cleanedBytes = 9'000'000;
        state.copyCleanedLink(entry);
        QCOMPARE(fakes->pasteboard.written.size(), std::size_t(1));
    }

    void theSameLinkTwiceGivesTwoEntries()
    {
        AppState state(fakes->dependencies());
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(state.historyEntries().size(), 2);
        QVERIFY(state.historyEntries().at(0).id != state.historyEntries().at(1).id);
    }

    void clearingTheHistoryRemovesItsKeyAndKeepsTheCounters()
    {
        AppState state(fakes->dependencies());
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));

        state.clearHistory();
        QVERIFY(state.historyEntries().isEmpty());
        QVERIFY(!fakes->defaults.keys().contains(u"historyEntries"_s));
        QCOMPARE(state.totalCleaned(), 1);

        state.record(resultOf(u"https://b.example/"_s, {u"si"_s}));
        QCOMPARE(historyFromJson(*fakes->defaults.data(u"historyEntries"))->size(), 1);
    }

    void clearingAnEmptyHistoryRemovesItsKeyAndAnnouncesNothing()
    {
        AppState state(fakes->dependencies());
        fakes->defaults.writes.clear();
        const QSignalSpy announced(&state, &AppState::historyEntriesChanged);

        state.clearHistory();
        QCOMPARE(fakes->defaults.writes, QStringList(u"-historyEntries"_s));
        QCOMPARE(announced.size(), 0);
    }

    void aDamagedHistoryReadsAsEmptyAndIsReplacedByTheNextCleaning()
    {
        fakes->defaults.place(u"historyEntries"_s, QByteArray("[{\"id\":1}]"));
        AppState state(fakes->dependencies());
        QVERIFY(state.historyEntries().isEmpty());
        QCOMPARE(fakes->defaults.data(u"historyEntries"), QByteArray("[{\"id\":1}]"));

        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(historyFromJson(*fakes->defaults.data(u"historyEntries"))->size(), 1);
    }

    void copyingAgainAndRestoringOnlyWriteTheText()
    {
        AppState state(fakes->dependencies());
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        const CleanHistoryEntry entry = state.historyEntries().first();
        fakes->telemetry.events.clear();
        fakes->defaults.writes.clear();

        state.copyCleanedLink(entry);
        QCOMPARE(fakes->pasteboard.contents().value(), "https://a.example/");
        state.restoreOriginalLink(entry);
        QCOMPARE(fakes->pasteboard.contents().value(), "https://a.example/?tracked");
        QCOMPARE(fakes->pasteboard.clears, 2);

        QCOMPARE(state.totalCleaned(), 1);
        QCOMPARE(state.historyEntries().size(), 1);
        QVERIFY(fakes->telemetry.events.isEmpty());
        QVERIFY(fakes->defaults.writes.isEmpty());
    }

    // Ignoring the last domain

    void ignoringTheLastDomainTwiceAddsItOnce()
    {
        AppState state(fakes->dependencies());
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
        AppState state(fakes->dependencies());
        state.setIgnoredDomainsText(u"   "_s);
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        state.addIgnoredHostFromLastResult();
        QCOMPARE(state.ignoredDomainsText(), u"   a.example"_s);
        QCOMPARE(state.ignoredHosts(), std::set<std::string>{"a.example"});
    }

    void theLastDomainIsThatOfTheCleanedText()
    {
        AppState state(fakes->dependencies());
        state.record({u"https://tracked.example/?si=x"_s, u"https://clean.example/"_s, {u"si"_s}});
        state.addIgnoredHostFromLastResult();
        QCOMPARE(state.ignoredDomainsText(), u"clean.example"_s);
    }

    void linksWithoutAHostArePassedOver()
    {
        AppState state(fakes->dependencies());
        state.record(resultOf(u"mailto:me@mail.example then https://a.example/"_s, {u"si"_s}));
        state.addIgnoredHostFromLastResult();
        QCOMPARE(state.ignoredDomainsText(), u"a.example"_s);
    }

    void withoutALastResultOrAHostNothingIsIgnored()
    {
        AppState state(fakes->dependencies());
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
        AppState state(fakes->dependencies());

        state.setLaunchAtLoginEnabled(true);
        state.setLaunchAtLoginEnabled(true);
        state.setLaunchAtLoginEnabled(false);

        QCOMPARE(fakes->loginItem.calls, QStringList({u"register"_s, u"register"_s, u"unregister"_s}));
        QCOMPARE(state.lastError(), QString());
    }

    void startAtLoginWithoutABundleIsExplained()
    {
        AppState state(fakes->dependencies());
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
        AppState state(fakes->dependencies());
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
        AppState state(fakes->dependencies());
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
        AppState state(fakes->dependencies());
        state.setLaunchAtLoginEnabled(true);
        QCOMPARE(state.lastError(), QString());

        fakes->loginItem.refuseLate();

        QCOMPARE(state.lastError(), u"Start at Login could not be updated in this build."_s);
        QVERIFY(state.launchAtLoginEnabled());
    }

    void cleaningsAndHistoryActionsClearTheMessage()
    {
        AppState state(fakes->dependencies());
        state.setLaunchAtLoginEnabled(true);
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(state.lastError(), QString());

        state.setLaunchAtLoginEnabled(true);
        state.copyCleanedLink(state.historyEntries().first());
        QCOMPARE(state.lastError(), QString());
    }

    void troubleWithTheStoreIsStateForAsLongAsItLasts()
    {
        fakes->defaults.fail(DefaultsStore::Problem::setAside);
        AppState state(fakes->dependencies());
        QVERIFY(state.settingsSetAside());
        QVERIFY(!state.settingsNotSaved());
        QSignalSpy changes(&state, &AppState::settingsNotSavedChanged);

        fakes->defaults.failsWrites = true;
        state.setAutoCleanEnabled(false);
        state.setAutoCleanEnabled(true);
        QVERIFY(state.settingsNotSaved());
        QCOMPARE(changes.size(), 1);
        fakes->defaults.recover();
        QVERIFY(!state.settingsNotSaved());
        QVERIFY(state.settingsSetAside());
        QCOMPARE(state.lastError(), QString()); // No outcome of an action.
    }

    void anActionThatSucceedsDoesNotHideWhatLasts()
    {
        AppState state(fakes->dependencies());
        fakes->defaults.failsWrites = true;
        state.record(resultOf(u"https://a.example/"_s, {u"si"_s}));
        QCOMPARE(state.totalCleaned(), 1);
        QVERIFY(state.settingsNotSaved());
        state.copyCleanedLink(state.historyEntries().first());
        QVERIFY(state.settingsNotSaved());
        QCOMPARE(state.lastError(), QString());
    }

    void theReachOfTheClipboardIsFollowed()
    {
        AppState state(fakes->dependencies());
        QSignalSpy changes(&state, &AppState::clipboardReachChanged);
        QCOMPARE(state.clipboardReach(), ClipboardReach::all);
        fakes->pasteboard.setReach(Pasteboard::Reach::none);
        QCOMPARE(state.clipboardReach(), ClipboardReach::none);
        fakes->pasteboard.setReach(Pasteboard::Reach::onlyX11);
        QCOMPARE(state.clipboardReach(), ClipboardReach::onlyX11);
        QCOMPARE(changes.size(), 2);
        QCOMPARE(state.lastError(), QString());
    }

private:
    FakeSystemLanguage language;
    std::unique_ptr<FakeServices> fakes;
};

static const RegisteredTest<AppStateTests> registered;
#include "AppStateTests.moc"
