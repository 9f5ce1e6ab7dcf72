#include <VelmoraMac/ClipboardMonitor.h>

#include <QSignalSpy>
#include <QTest>

#include <Fakes/FakeServices.h>
#include <Fakes/RecordingNotices.h>
#include <Runner/RegisteredTest.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const std::string tracked = "https://a.example/?id=7&utm_source=x";
const std::string cleaned = "https://a.example/?id=7";
const std::string otherTracked = "https://b.example/?gclid=1";
const std::string otherCleaned = "https://b.example/";

} // namespace

class ClipboardMonitorTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    // Every behaviour holds for a clipboard that reports its changes and for one that has to be polled.
    void initTestCase_data()
    {
        QTest::addColumn<bool>("notifies");
        QTest::newRow("reporting") << true;
        QTest::newRow("polled") << false;
    }

    void init()
    {
        QFETCH_GLOBAL(bool, notifies);
        monitor.reset();
        state.reset();
        notices = {};
        fakes = std::make_unique<FakeServices>();
        fakes->pasteboard.notifies = notifies;
        state = std::make_unique<AppState>(fakes->dependencies());
        monitor = std::make_unique<ClipboardMonitor>(fakes->pasteboard, fakes->time, notices);
    }

    // Watching

    void textThatWasThereBeforeIsNeverCleaned()
    {
        fakes->pasteboard.copy(tracked);
        monitor->start(*state);
        fakes->time.pass(10s);
        QCOMPARE(contents(), tracked);
        QCOMPARE(fakes->pasteboard.reads, 0);
    }

    void itRunsFromItsFirstStartOn()
    {
        const QSignalSpy changed(monitor.get(), &ClipboardMonitor::isRunningChanged);
        QVERIFY(!monitor->isRunning());
        monitor->start(*state);
        monitor->start(*state);
        QVERIFY(monitor->isRunning());
        QCOMPARE(changed.count(), 1);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(1s);
        QCOMPARE(state->totalCleaned(), 1);
    }

    void beforeItsStartNothingHappens()
    {
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(10s);
        QCOMPARE(contents(), tracked);
    }

    void aCopyIsCleanedAtTheNextPointOfTheGrid()
    {
        fakes->time.pass(50ms);
        monitor->start(*state); // Its grid begins here.
        fakes->time.pass(1s);   // The next points are at 1.1 s and 1.32 s.
        fakes->pasteboard.copy(tracked);

        fakes->time.pass(99ms);
        QCOMPARE(contents(), tracked);
        fakes->time.pass(1ms);
        QCOMPARE(contents(), cleaned);
    }

    void everyCopyOfManyInARowIsCleanedAndOnlyTheLastOfAQuickPair()
    {
        monitor->start(*state);
        for (int i = 0; i < 50; ++i) {
            fakes->pasteboard.copy(tracked);
            fakes->time.pass(230ms);
            QCOMPARE(contents(), cleaned);
        }
        QCOMPARE(state->totalCleaned(), 50);

        fakes->pasteboard.copy(tracked);
        fakes->time.pass(1ms);
        fakes->pasteboard.copy(otherTracked);
        fakes->time.pass(220ms);
        QCOMPARE(contents(), otherCleaned);
        QCOMPARE(state->totalCleaned(), 51);
    }

    void anIdleClipboardThatReportsItsChangesWakesNobody()
    {
        QFETCH_GLOBAL(bool, notifies);
        monitor->start(*state);
        fakes->time.pass(1min);
        QCOMPARE(fakes->time.waiting(), notifies ? 0U : 1U);
    }

    void itsOwnTextIsNotInspected()
    {
        monitor->start(*state);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(10s);
        QCOMPARE(fakes->pasteboard.reads, 1);
        QCOMPARE(fakes->pasteboard.written, std::vector<std::string>({cleaned}));
        QCOMPARE(fakes->pasteboard.clears, 1);
        QCOMPARE(state->totalCleaned(), 1);
    }

    // What stands behind the comma could be the text's own only if there were a text.
    void aLinkThatIsTheWholeCopyLosesTheWholeOfItsLastValue()
    {
        monitor->start(*state);
        fakes->pasteboard.copy("https://a.example/?utm_source=a,b");
        fakes->time.pass(220ms);
        QCOMPARE(contents(), std::string("https://a.example/"));
    }

    void theSameLinkCopiedTwiceIsCleanedTwice()
    {
        monitor->start(*state);
        for (int i = 0; i < 2; ++i) {
            fakes->pasteboard.copy(tracked);
            fakes->time.pass(220ms);
        }
        QCOMPARE(state->totalCleaned(), 2);
        QCOMPARE(state->historyEntries().size(), 2);
    }

    // Gates

    void aCopyMadeWhilePausedIsNeverCleanedLater()
    {
        monitor->start(*state);
        state->setAutoCleanEnabled(false);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(1s);
        QCOMPARE(fakes->pasteboard.reads, 0);

        state->setAutoCleanEnabled(true);
        fakes->time.pass(1s);
        QCOMPARE(contents(), tracked);
        fakes->pasteboard.copy(otherTracked);
        fakes->time.pass(220ms);
        QCOMPARE(contents(), otherCleaned);
        QCOMPARE(state->totalCleaned(), 1);
    }

    void textsWithNothingToRemoveAreLeftAlone_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("no link") << QByteArray("just words");
        QTest::newRow("a link without trackers") << QByteArray("https://a.example/?id=7");
        QTest::newRow("a duplicate parameter") << QByteArray("https://a.example/?id=7&id=7");
        QTest::newRow("blanks") << QByteArray(" \n\t ");
        QTest::newRow("nothing") << QByteArray("");
        QTest::newRow("no UTF-8") << QByteArray("\xff\xfe?utm_source=x");
    }

    void textsWithNothingToRemoveAreLeftAlone()
    {
        QFETCH(QByteArray, text);
        monitor->start(*state);
        const qint64 before = fakes->pasteboard.changeCount();
        const QStringList writesBefore = fakes->defaults.writes;
        fakes->pasteboard.copy(text.toStdString());
        fakes->time.pass(1s);
        QCOMPARE(fakes->pasteboard.changeCount(), before + 1);
        QCOMPARE(fakes->defaults.writes, writesBefore);
        QVERIFY(notices.shown.isEmpty() && notices.warnings.isEmpty());
    }

    void anImageIsLeftAlone()
    {
        monitor->start(*state);
        fakes->pasteboard.copyImage();
        fakes->time.pass(1s);
        QVERIFY(fakes->pasteboard.written.empty());
        QCOMPARE(state->totalCleaned(), 0);
    }

    void bytesAroundALinkComeBackUnharmed()
    {
        monitor->start(*state);
        const std::string before("a\0b\xff ", 5);
        fakes->pasteboard.copy(before + tracked + " \xc3");
        fakes->time.pass(220ms);
        QCOMPARE(contents(), before + cleaned + " \xc3");
    }

    void anEditOfTheIgnoredDomainsCountsFromTheNextCopyOn()
    {
        monitor->start(*state);
        state->setIgnoredDomainsText(u"A.example"_s);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        QCOMPARE(contents(), tracked);

        state->setIgnoredDomainsText(QString());
        fakes->time.pass(1s);
        QCOMPARE(contents(), tracked);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        QCOMPARE(contents(), cleaned);

        state->setIgnoredDomainsText(u"other.example\nA.example"_s);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        QCOMPARE(contents(), tracked);
    }

    // Slow and hanging owners

    void aLateAnswerIsCleanedWhenItComes()
    {
        monitor->start(*state);
        fakes->pasteboard.answerDelay = 500ms;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(719ms);
        QCOMPARE(contents(), tracked);
        fakes->time.pass(1ms);
        QCOMPARE(contents(), cleaned);
    }

    void aNewerCopyOutdatesAPendingAnswerAndIsCleanedInItsPlace()
    {
        monitor->start(*state);
        fakes->pasteboard.answerDelay = 100ms;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(270ms); // Asked at 220 ms.
        fakes->pasteboard.copy(otherTracked);
        fakes->time.pass(1s);
        QCOMPARE(contents(), otherCleaned);
        QCOMPARE(state->totalCleaned(), 1);
    }

    void anOutdatedAnswerDoesNotReplaceANewerCopy()
    {
        monitor->start(*state);
        fakes->pasteboard.answerDelay = 100ms;
        fakes->pasteboard.givesOutdated = true;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(270ms); // Asked at 220 ms.
        fakes->pasteboard.copy("nothing to clean");
        fakes->time.pass(1s);
        QCOMPARE(contents(), "nothing to clean");
        QCOMPARE(state->totalCleaned(), 0);
    }

    void anOwnerThatHangsCostsOnlyItsOwnCopy()
    {
        monitor->start(*state);
        fakes->pasteboard.answers = false;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(300ms);
        fakes->pasteboard.answers = true;
        fakes->pasteboard.copy(otherTracked);
        fakes->time.pass(220ms);
        QCOMPARE(contents(), otherCleaned);
        fakes->time.pass(10s);
        QCOMPARE(state->totalCleaned(), 1);
    }

    void pausingBeforeTheAnswerLeavesTheTextAlone()
    {
        monitor->start(*state);
        fakes->pasteboard.answerDelay = 100ms;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(250ms);
        state->setAutoCleanEnabled(false);
        fakes->time.pass(1s);
        QCOMPARE(contents(), tracked);
        QCOMPARE(state->totalCleaned(), 0);
    }

    // Cleaning and asking

    void aCleaningIsRecordedBeforeItIsShown()
    {
        monitor->start(*state);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        QCOMPARE(notices.shown.size(), 1);
        QCOMPARE(notices.shown.first(), state->lastResult());
        QCOMPARE(state->lastResult().originalText, QString::fromStdString(tracked));
        QCOMPARE(state->lastResult().cleanedText, QString::fromStdString(cleaned));
        QCOMPARE(state->lastResult().removedParameterNames, QStringList(u"utm_source"_s));
        QVERIFY(notices.warnings.isEmpty());
    }

    void severalLinksAreOneCleaning()
    {
        monitor->start(*state);
        fakes->pasteboard.copy("x " + tracked + " y " + otherTracked + "&fbclid=2");
        fakes->time.pass(220ms);
        QCOMPARE(state->totalCleaned(), 1);
        QCOMPARE(state->totalTrackersRemoved(), 3);
        QCOMPARE(state->historyEntries().first().removedParameterNames,
                 QStringList({u"utm_source"_s, u"gclid"_s, u"fbclid"_s}));
    }

    void withAskFirstNothingHappensUntilTheUserAgrees()
    {
        monitor->start(*state);
        state->setAskBeforeCleaningEnabled(true);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(10s);
        QCOMPARE(notices.warnings.size(), 1);
        QCOMPARE(contents(), tracked);
        QCOMPARE(state->totalCleaned(), 0);
        QVERIFY(state->historyEntries().isEmpty());
        QVERIFY(!state->hasLastResult());
        QVERIFY(notices.shown.isEmpty());

        notices.warnings.first().cleanAction();
        QCOMPARE(contents(), cleaned);
        fakes->time.pass(0s);
        QCOMPARE(state->totalCleaned(), 1);
        QCOMPARE(notices.shown.size(), 1);
        fakes->time.pass(1s);
        QCOMPARE(state->totalCleaned(), 1);
    }

    void agreeingLateStillWritesTheEarlierResult()
    {
        monitor->start(*state);
        state->setAskBeforeCleaningEnabled(true);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(1s);
        fakes->pasteboard.copy("something else");
        fakes->time.pass(1s);
        notices.warnings.first().cleanAction();
        QCOMPARE(contents(), cleaned);
    }

    void aRestoredOriginalIsCleanedAgain()
    {
        monitor->start(*state);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        state->restoreOriginalLink(state->historyEntries().first());
        QCOMPARE(contents(), tracked);
        fakes->time.pass(220ms);
        QCOMPARE(contents(), cleaned);
        QCOMPARE(state->totalCleaned(), 2);
        QCOMPARE(state->historyEntries().size(), 2);
    }

    void aRestoredOriginalIsAskedAboutAgain()
    {
        monitor->start(*state);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        state->setAskBeforeCleaningEnabled(true);
        state->restoreOriginalLink(state->historyEntries().first());
        fakes->time.pass(220ms);
        QCOMPARE(notices.warnings.size(), 1);
        QCOMPARE(contents(), tracked);
    }

    // The end

    void nothingHappensOnceTheStateIsGone()
    {
        monitor->start(*state);
        state->setAskBeforeCleaningEnabled(true);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        state.reset();

        notices.warnings.first().cleanAction();
        fakes->pasteboard.copy(otherTracked);
        fakes->time.pass(10s);
        QCOMPARE(contents(), otherTracked);
    }

    void nothingHappensOnceTheMonitorIsGone()
    {
        monitor->start(*state);
        fakes->pasteboard.answerDelay = 100ms;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        monitor.reset();
        fakes->time.pass(10s);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(10s);
        QCOMPARE(contents(), tracked);
        QCOMPARE(state->totalCleaned(), 0);
    }

    void aWarningAgreedToAfterTheMonitorIsGoneDoesNothing()
    {
        monitor->start(*state);
        state->setAskBeforeCleaningEnabled(true);
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        monitor.reset();
        notices.warnings.first().cleanAction();
        QCOMPARE(contents(), tracked);
    }

private:
    [[nodiscard]] std::string contents() const { return fakes->pasteboard.contents().value_or("(no text)"); }

    RecordingNotices notices;
    std::unique_ptr<FakeServices> fakes;
    std::unique_ptr<AppState> state;
    std::unique_ptr<ClipboardMonitor> monitor;
};

static const RegisteredTest<ClipboardMonitorTests> registered;
#include "ClipboardMonitorTests.moc"
