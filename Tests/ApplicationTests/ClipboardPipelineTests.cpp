// The path of a copied link on a real X server: another program copies, and reads the clipboard afterwards.
#include <VelmoraLinux/Clipboard/X11Pasteboard.h>
#include <VelmoraLinux/Defaults/SqliteDefaultsStore.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>
#include <VelmoraLinux/Time/SystemWallClock.h>
#include <VelmoraMac/AppState.h>
#include <VelmoraMac/ClipboardMonitor.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <Fakes/FakeBundleInfo.h>
#include <Fakes/FakeLoginItem.h>
#include <Fakes/RecordingNotices.h>
#include <Fakes/RecordingTelemetrySink.h>
#include <Runner/RegisteredTest.h>
#include <TestBed/CopyingProgram.h>
#include <TestBed/XServer.h>

#include <algorithm>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Longer than any cleaning takes, to see that there is none.
constexpr auto threeGridPoints = 660ms;
constexpr auto patience = 20s;

QByteArray tracked(int number)
{
    const QByteArray n = QByteArray::number(number);
    return "https://shop" + n + ".example/item?id=" + n + "&utm_source=mail&fbclid=" + n;
}

QByteArray clean(int number)
{
    const QByteArray n = QByteArray::number(number);
    return "https://shop" + n + ".example/item?id=" + n;
}

// The application without its views, on real back ends; ends as the program does.
struct Pipeline {
    Pipeline(const QString &folder, const QByteArray &display)
        : defaults(folder)
        , pasteboard(X11Pasteboard::create(scheduler, display))
    {
        monitor.start(state);
    }

    EventLoopScheduler scheduler;
    SystemWallClock clock;
    SqliteDefaultsStore defaults;
    std::unique_ptr<X11Pasteboard> pasteboard;
    FakeLoginItem loginItem;
    FakeBundleInfo bundle;
    RecordingTelemetrySink telemetry;
    RecordingNotices notices;
    AppState state{{defaults, *pasteboard, loginItem, bundle, clock, telemetry}};
    ClipboardMonitor monitor{*pasteboard, scheduler, notices};
};

} // namespace

class ClipboardPipelineTests : public QObject {
    Q_OBJECT

    std::optional<XServer> server_;
    std::optional<QTemporaryDir> home_;
    std::unique_ptr<CopyingProgram> other_;
    std::unique_ptr<Pipeline> app_;

    [[nodiscard]] QString folder() const { return home_->filePath(u"velmora"_s); }

    void restart()
    {
        app_.reset();
        app_ = std::make_unique<Pipeline>(folder(), server_->display());
    }

    // What a paste gives after this copy was cleaned; nothing when it was not cleaned.
    std::optional<QByteArray> copyAndPaste(const QByteArray &text)
    {
        if (!other_->copy(text) || !other_->waitUntilLost(patience))
            return std::nullopt;
        return paste(server_->environment());
    }

    // Whether the clipboard stays with the program that has just copied this.
    bool staysUntouched(const QByteArray &text, const QByteArray &mode = "text")
    {
        return other_->copy(text, mode) && !other_->waitUntilLost(threeGridPoints);
    }

    [[nodiscard]] bool isOnDisk(const QByteArray &bytes) const
    {
        const QStringList names = QDir(folder()).entryList(QDir::Files);
        return std::any_of(names.begin(), names.end(), [&](const QString &name) {
            QFile file(folder() + u'/' + name);
            return file.open(QIODevice::ReadOnly) && file.readAll().contains(bytes);
        });
    }

private Q_SLOTS:

    void initTestCase()
    {
        server_.emplace();
        QVERIFY(server_->isRunning());
    }

    void init()
    {
        home_.emplace();
        restart();
        QVERIFY(app_->pasteboard);
        other_ = std::make_unique<CopyingProgram>(server_->environment());
    }

    void cleanup()
    {
        other_.reset();
        app_.reset();
    }

    void fiftyTrackedLinksComeBackCleanAndAreRecordedInOrder()
    {
        std::vector<double> latencies;
        for (int i = 0; i < 50; ++i) {
            const auto copied = other_->copy(tracked(i));
            QVERIFY(copied.has_value());
            const auto cleaned = other_->waitUntilLost(patience);
            QVERIFY(cleaned.has_value());
            latencies.push_back(double((*cleaned - *copied).count()) / 1e6);
            QCOMPARE(paste(server_->environment()), std::optional(clean(i)));
        }
        std::sort(latencies.begin(), latencies.end());
        qInfo("50 of 50 cleaned; copy to clean clipboard: p50 %.1f ms, max %.1f ms", latencies.at(25),
              latencies.back());

        for (int start = 0; start < 2; ++start) { // The second time as it was stored.
            QCOMPARE(app_->state.totalCleaned(), 50);
            QCOMPARE(app_->state.totalTrackersRemoved(), 100);
            QCOMPARE(app_->state.cleanedToday(), 50);
            const QList<CleanHistoryEntry> entries = app_->state.historyEntries();
            QCOMPARE(entries.size(), 30);
            for (int i = 0; i < 30; ++i) {
                QCOMPARE(entries.at(i).originalText, QString::fromLatin1(tracked(49 - i)));
                QCOMPARE(entries.at(i).cleanedText, QString::fromLatin1(clean(49 - i)));
                QCOMPARE(entries.at(i).removedParameterNames, QStringList({u"utm_source"_s, u"fbclid"_s}));
            }
            restart();
        }
    }

    void theSameLinkCopiedTwiceIsCleanedTwice()
    {
        QCOMPARE(copyAndPaste(tracked(1)), std::optional(clean(1)));
        QCOMPARE(copyAndPaste(tracked(1)), std::optional(clean(1)));
        QCOMPARE(app_->state.totalCleaned(), 2);
        QCOMPARE(app_->state.historyEntries().size(), 2);
    }

    void whatWasCopiedWhilePausedStaysAsItIs()
    {
        app_->state.setAutoCleanEnabled(false);
        QVERIFY(staysUntouched(tracked(1)));
        app_->state.setAutoCleanEnabled(true);
        QVERIFY(!other_->waitUntilLost(threeGridPoints));
        QCOMPARE(copyAndPaste(tracked(2)), std::optional(clean(2)));
        QCOMPARE(app_->state.totalCleaned(), 1);
    }

    void whatWasThereBeforeTheStartStaysAsItIs()
    {
        app_.reset();
        QVERIFY(other_->copy(tracked(1)));
        restart();
        QVERIFY(!other_->waitUntilLost(threeGridPoints));
        QCOMPARE(copyAndPaste(tracked(2)), std::optional(clean(2)));
    }

    void withAskFirstNothingIsCleanedUnlessTheUserAgrees()
    {
        app_->state.setAskBeforeCleaningEnabled(true);
        QVERIFY(staysUntouched(tracked(1)));
        QCOMPARE(app_->notices.warnings.size(), 1);
        QCOMPARE(app_->state.totalCleaned(), 0);
        QCOMPARE(paste(server_->environment()), std::optional(tracked(1)));

        app_->notices.warnings.first().cleanAction();
        QVERIFY(other_->waitUntilLost(patience));
        QCOMPARE(paste(server_->environment()), std::optional(clean(1)));
        QCOMPARE(app_->state.totalCleaned(), 1);
        QCOMPARE(app_->state.historyEntries().size(), 1);
    }

    void aRestoredOriginalIsCleanedAgain()
    {
        QCOMPARE(copyAndPaste(tracked(1)), std::optional(clean(1)));
        app_->state.restoreOriginalLink(app_->state.historyEntries().first());
        QCOMPARE(paste(server_->environment()), std::optional(tracked(1)));
        QTRY_COMPARE(app_->state.totalCleaned(), 2);
        QCOMPARE(paste(server_->environment()), std::optional(clean(1)));
        QCOMPARE(app_->state.historyEntries().size(), 2);
    }

    void textWithNothingToRemoveIsNotTouched_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("no link") << QByteArray("just words?");
        QTest::newRow("a clean link") << QByteArray("https://example.com/?id=1");
        QTest::newRow("white space") << QByteArray(" \n\t");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("64 MiB without a link") << QByteArray(64 << 20, 'x');
    }

    void textWithNothingToRemoveIsNotTouched()
    {
        QFETCH(QByteArray, text);
        QVERIFY(staysUntouched(text));
        QCOMPARE(app_->state.totalCleaned(), 0);
        QVERIFY(app_->state.historyEntries().isEmpty());
    }

    void aTextBeyondTheLimitIsNotTouched()
    {
        const QByteArray link = tracked(1) + ' ';
        QVERIFY(staysUntouched(link + QByteArray((64 << 20) - link.size() + 1, 'x')));
        QCOMPARE(app_->state.totalCleaned(), 0);
    }

    void anImageIsNotTouched() { QVERIFY(staysUntouched(tracked(1), "image")); }

    void aSecretIsNotTouchedAndNotStored()
    {
        QVERIFY(staysUntouched(tracked(7), "secret"));
        QCOMPARE(copyAndPaste(tracked(8)), std::optional(clean(8)));
        QCOMPARE(app_->state.totalCleaned(), 1);
        QVERIFY(isOnDisk(clean(8)));
        QVERIFY(!isOnDisk("shop7.example"));
        app_.reset();
        QVERIFY(!isOnDisk("shop7.example"));
    }

    void bytesAroundALinkStayUnchanged()
    {
        const QByteArray before("NUL \0, not UTF-8 \xff\xc3( \xed\xa0\x80, ", 27);
        const QByteArray after("\r\n\t\0\xfe end", 9);
        QCOMPARE(copyAndPaste(before + tracked(1) + after), std::optional(before + clean(1) + after));
    }

    void aLongTextComesBackWithItsLinkCleaned()
    {
        const QByteArray page = QByteArray("a line of prose without any link\n").repeated(100000);
        const auto pasted = copyAndPaste(page + tracked(1) + '\n' + page);
        QVERIFY(pasted == std::optional(page + clean(1) + '\n' + page));
    }

    // Whoever waited for the owner would have an outcome before anything else can happen.
    void aHangingOwnerDelaysOnlyItsOwnCopy()
    {
        CopyingProgram hung(server_->environment());
        QVERIFY(hung.copy(tracked(1)));
        hung.hang();
        QTRY_COMPARE(app_->pasteboard->changeCount(), 1);
        bool isRead = false;
        bool isOther = false;
        app_->pasteboard->readString([&isRead](const auto &) { isRead = true; });
        QTimer::singleShot(0, [&isOther] { isOther = true; });
        QTRY_VERIFY(isOther || isRead);
        QVERIFY(!isRead);
        QCOMPARE(copyAndPaste(tracked(2)), std::optional(clean(2)));
        QVERIFY(isRead); // Without a text: it was for a copy that is gone.
        QCOMPARE(app_->state.totalCleaned(), 1);
    }

    void anOwnerThatMisbehavesLosesOnlyItsCopy_data()
    {
        QTest::addColumn<QByteArray>("mode");
        for (const char *mode : {"silent", "wrong-type", "wrong-format", "unwritten", "garbage-targets",
                                 "pieces-stall", "pieces-endless", "pieces-lie", "mark-unreadable"})
            QTest::newRow(mode) << QByteArray(mode);
    }

    void anOwnerThatMisbehavesLosesOnlyItsCopy()
    {
        QFETCH(QByteArray, mode);
        QVERIFY(staysUntouched(tracked(1) + QByteArray(3000, ' '), mode));
        QCOMPARE(copyAndPaste(tracked(2)), std::optional(clean(2)));
        QCOMPARE(app_->state.totalCleaned(), 1);
    }

    void anOwnerThatEndsDuringATransferLosesOnlyItsCopy()
    {
        CopyingProgram dying(server_->environment());
        QVERIFY(dying.copy(tracked(1) + QByteArray(3000, ' '), "pieces-die"));
        QTest::qWait(400);
        QCOMPARE(copyAndPaste(tracked(2)), std::optional(clean(2)));
        QCOMPARE(app_->state.totalCleaned(), 1);
    }

    void aCleaningIsKeptThoughTheStoreIsLostMeanwhile()
    {
        QCOMPARE(copyAndPaste(tracked(1)), std::optional(clean(1)));
        QVERIFY(QDir(folder()).removeRecursively());
        QFile obstacle(folder());
        QVERIFY(obstacle.open(QIODevice::WriteOnly)); // Now there cannot even be a folder.
        QCOMPARE(copyAndPaste(tracked(2)), std::optional(clean(2)));
        QVERIFY(app_->state.settingsNotSaved());

        QVERIFY(obstacle.remove());
        QCOMPARE(copyAndPaste(tracked(3)), std::optional(clean(3)));
        QVERIFY(!app_->state.settingsNotSaved());
        restart();
        QCOMPARE(app_->state.totalCleaned(), 3);
        QCOMPARE(app_->state.historyEntries().size(), 3);
    }
};

static const RegisteredTest<ClipboardPipelineTests> registered;
#include "ClipboardPipelineTests.moc"
