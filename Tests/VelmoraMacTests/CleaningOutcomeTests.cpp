// What of a cleaning is recorded, when, and how much of it is kept.
#include <VelmoraMac/ClipboardMonitor.h>

#include <QTest>

#include <Fakes/FakeServices.h>
#include <Fakes/RecordingNotices.h>
#include <Runner/RegisteredTest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <limits>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const std::string tracked = "https://a.example/?id=7&utm_source=x";
const std::string cleaned = "https://a.example/?id=7";

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): a handler of signals gets nothing passed in.
const FakePasteboard *watched = nullptr;

// In a child process: tells whether the clipboard had been taken when the program gave up.
void endWithWrites(int)
{
    _exit(static_cast<int>(watched->written.size()) + watched->clears);
}

} // namespace

class CleaningOutcomeTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        monitor.reset();
        state.reset();
        notices = {};
        fakes = std::make_unique<FakeServices>();
        begin();
    }

    void aCleaningIsRecordedAndShownWhenTheClipboardIsOurs()
    {
        monitor->start(*state);
        fakes->pasteboard.settleTime = 50ms;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        QCOMPARE(contents(), cleaned);
        QCOMPARE(state->totalCleaned(), 0);
        QVERIFY(notices.shown.isEmpty());
        QVERIFY(state->historyEntries().isEmpty());
        fakes->time.pass(50ms);
        QCOMPARE(state->totalCleaned(), 1);
        QCOMPARE(notices.shown.size(), 1);
        QCOMPARE(state->historyEntries().size(), 1);
    }

    void aCleaningThatNeverReachesTheClipboardIsNotCounted()
    {
        monitor->start(*state);
        fakes->pasteboard.gives = false;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(1s);
        QCOMPARE(state->totalCleaned(), 0);
        QVERIFY(state->historyEntries().isEmpty());
        QVERIFY(!state->hasLastResult());
        QVERIFY(notices.shown.isEmpty());

        fakes->pasteboard.gives = true;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(1s);
        QCOMPARE(state->totalCleaned(), 1);
    }

    void aCleaningThatANewerCopyOvertakesIsNotCounted()
    {
        monitor->start(*state);
        fakes->pasteboard.settleTime = 50ms;
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(220ms);
        fakes->pasteboard.copy("newer");
        fakes->time.pass(1s);
        QCOMPARE(contents(), "newer");
        QCOMPARE(state->totalCleaned(), 0);
        QVERIFY(notices.shown.isEmpty());
    }

    void aVeryLongTextIsCleanedWholeAndKeptAsItsBeginning()
    {
        monitor->start(*state);
        const std::string words(600'000, 'w');
        fakes->pasteboard.copy(words + ' ' + tracked);
        fakes->time.pass(220ms);
        QVERIFY(contents() == words + ' ' + cleaned);
        QCOMPARE(state->totalCleaned(), 1);
        const CleanHistoryEntry entry = state->historyEntries().first();
        QCOMPARE(entry.originalBytes, qint64(words.size() + 1 + tracked.size()));
        QCOMPARE(entry.cleanedBytes, qint64(words.size() + 1 + cleaned.size()));
        QCOMPARE(entry.originalText.size(), 4096);
        QVERIFY(state->lastResult().didChange());
    }

    void whatIsNotUtf8IsRestoredByteForByte()
    {
        monitor->start(*state);
        const std::string strange = "\xff\xc3 " + tracked + " \xed\xa0\x80";
        fakes->pasteboard.copy(strange);
        fakes->time.pass(220ms);
        QCOMPARE(state->historyEntries().size(), 1);
        state->restoreOriginalLink(state->historyEntries().first());
        QCOMPARE(contents(), strange);
    }

    void aMillionRemovedParametersAreCountedAndAHundredNamed()
    {
        monitor->start(*state);
        std::string link = "https://a.example/?id=1";
        for (int i = 0; i < 100'000; ++i)
            link += "&utm_" + std::to_string(i) + "=x";
        fakes->pasteboard.copy(link);
        fakes->time.pass(220ms);
        QCOMPARE(contents(), "https://a.example/?id=1");
        QCOMPARE(state->totalTrackersRemoved(), 100'000);
        QCOMPARE(state->historyEntries().first().removedCount, 100'000);
        QCOMPARE(state->lastResult().removedCount(), 100'000);
        QCOMPARE(state->lastResult().removedParameterNames.size(), 100);
    }

    void theClipboardIsTakenBeforeTheRecordAndTheRecordBeforeTheNotice()
    {
        monitor->start(*state);
        QStringList order;
        connect(state.get(), &AppState::totalCleanedChanged, this, [&] {
            QCOMPARE(contents(), cleaned);
            QVERIFY(notices.shown.isEmpty());
            order << u"record"_s;
        });
        connect(state.get(), &AppState::historyEntriesChanged, this, [&] {
            QVERIFY(!fakes->defaults.writes.contains(u"historyEntries"_s));
            order << u"history"_s;
        });
        fakes->pasteboard.copy(tracked);
        fakes->time.pass(1s);
        QCOMPARE(order, QStringList({u"record"_s, u"history"_s}));
        QCOMPARE(notices.shown.size(), 1);
    }

    void aFullCounterEndsTheProgramBeforeTheClipboardIsTaken_data()
    {
        QTest::addColumn<QString>("key");
        for (const auto &key : {u"totalCleaned"_s, u"totalTrackersRemoved"_s, u"cleanedToday"_s})
            QTest::newRow(qPrintable(key)) << key;
    }

    void aFullCounterEndsTheProgramBeforeTheClipboardIsTaken()
    {
        QFETCH(QString, key);
        const pid_t child = fork();
        if (child == 0) {
            watched = &fakes->pasteboard;
            std::signal(SIGABRT, endWithWrites);
            fakes->defaults.place(key, std::numeric_limits<qint64>::max());
            begin();
            monitor->start(*state);
            fakes->pasteboard.copy(tracked);
            fakes->time.pass(1s);
            _exit(99);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
    }

private:
    [[nodiscard]] std::string contents() const { return fakes->pasteboard.contents().value_or(""); }

    void begin()
    {
        monitor.reset();
        state = std::make_unique<AppState>(fakes->dependencies());
        monitor = std::make_unique<ClipboardMonitor>(fakes->pasteboard, fakes->time, notices);
    }

    std::unique_ptr<FakeServices> fakes;
    RecordingNotices notices;
    std::unique_ptr<AppState> state;
    std::unique_ptr<ClipboardMonitor> monitor;
};

static const RegisteredTest<CleaningOutcomeTests> registered;
#include "CleaningOutcomeTests.moc"
