#include <VelmoraLinux/Clipboard/X11Pasteboard.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>

#include <QDirIterator>
#include <QTest>

#include <Fakes/VirtualTime.h>
#include <Runner/RegisteredTest.h>
#include <TestBed/CopyingProgram.h>
#include <TestBed/SessionBus.h>
#include <TestBed/XServer.h>

#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Text = std::optional<std::string>;

constexpr qsizetype mebibyte = qsizetype(1024) * 1024;

// What came of a reading: nothing as long as there is no answer.
using Answer = std::optional<Text>;

void read(Pasteboard &pasteboard, Answer &answer)
{
    pasteboard.readString([&answer](Text text) { answer = std::move(text); });
}

// How often the process has been given a processor.
QByteArray activityOf(const QProcess &process)
{
    QByteArray counts;
    QDirIterator threads(u"/proc/%1/task"_s.arg(process.processId()), QDir::Dirs | QDir::NoDotAndDotDot);
    while (threads.hasNext()) {
        QFile status(threads.next() + u"/status"_s);
        if (!status.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.contains("ctxt_switches"))
                counts += line;
        }
    }
    return counts;
}

// Returns when the process has nothing to do any more.
void letComeToRest(const QProcess &process)
{
    QByteArray before;
    const bool rests = QTest::qWaitFor(
        [&] {
            before = activityOf(process);
            QTest::qWait(400);
            return !before.isEmpty() && before == activityOf(process);
        },
        30000);
    QVERIFY(rests);
}

} // namespace

class X11PasteboardTests : public QObject {
    Q_OBJECT

    std::optional<XServer> server_;
    EventLoopScheduler scheduler_;
    VirtualTime stillTime_; // In which no limit is ever reached.
    TransferLimits limits_;
    std::unique_ptr<X11Pasteboard> pasteboard_;
    std::unique_ptr<CopyingProgram> other_;

    [[nodiscard]] Text readNow()
    {
        Answer answer;
        read(*pasteboard_, answer);
        const bool isAnswered = QTest::qWaitFor([&answer] { return answer.has_value(); }, 30000);
        return isAnswered ? *answer : Text("no answer came");
    }

    // Until the pasteboard has heard of everything the server did so far.
    void settle(qint64 count) { QTRY_COMPARE_WITH_TIMEOUT(pasteboard_->changeCount(), count, 20000); }

    // Returns when others get the text.
    static void offer(Pasteboard &pasteboard, const std::string &text)
    {
        bool isOurs = false;
        pasteboard.setString(text, [&isOurs](bool ours) { isOurs = ours; });
        QTRY_VERIFY(isOurs);
    }

    void makePasteboard() { makePasteboard(scheduler_); }

    void makePasteboard(Scheduler &scheduler)
    {
        pasteboard_ = X11Pasteboard::create(scheduler, server_->display(), limits_);
    }

private Q_SLOTS:

    void initTestCase()
    {
        server_.emplace();
        QVERIFY(server_->isRunning());
    }

    void init()
    {
        limits_ = {};
        makePasteboard();
        QVERIFY(pasteboard_);
        other_ = std::make_unique<CopyingProgram>(server_->environment());
    }

    void cleanup()
    {
        other_.reset();
        pasteboard_.reset();
    }

    void withoutAServerThereIsNoPasteboard()
    {
        QVERIFY(X11Pasteboard::create(scheduler_, ":29999") == nullptr);
        QVERIFY(X11Pasteboard::create(scheduler_, "nonsense") == nullptr);
    }

    // Programs and their server take turns of their own: the request to be told must not still be on its way.
    void aCopyRightBehindTheBeginningIsSeen()
    {
        const auto other = XcbConnection::open(server_->display());
        QVERIFY(other);
        const xcb_window_t owner = other->makeWindow();
        for (int round = 0; round < 500; ++round) {
            const auto pasteboard = X11Pasteboard::create(scheduler_, server_->display());
            xcb_set_selection_owner(other->raw(), owner, other->atom(XcbAtom::clipboard), XCB_CURRENT_TIME);
            other->flush();
            QTRY_COMPARE(pasteboard->changeCount(), 1);
        }
    }

    void anEmptyClipboardHasNoText()
    {
        const XServer fresh;
        const auto pasteboard = X11Pasteboard::create(scheduler_, fresh.display());
        Answer answer;
        read(*pasteboard, answer);
        QTRY_VERIFY(answer.has_value());
        QCOMPARE(*answer, Text());
    }

    void everyCopyIsOneStepOfTheCountAlsoOfTheSameText()
    {
        int calls = 0;
        pasteboard_->setChangeHandler([&calls] { ++calls; });
        for (int i = 1; i <= 3; ++i) {
            QVERIFY(other_->copy("the same"));
            settle(i);
        }
        QTRY_COMPARE(calls, 3);
        QCOMPARE(readNow(), Text("the same"));
        QCOMPARE(pasteboard_->changeCount(), 3);
    }

    void textIsReadAsItsOwnerGivesIt_data()
    {
        QTest::addColumn<QByteArray>("mode");
        QTest::addColumn<QByteArray>("copied");
        QTest::addColumn<QByteArray>("text");
        const QByteArray link = "https://example.com/?utm_source=a";
        const QByteArray strange("a\0b \xff\xfe \xc3( \xed\xa0\x80 end", 17);
        const QByteArray pieces = QByteArray("0123456789").repeated(1234) + "x";
        QTest::newRow("plain") << QByteArray("text") << link << link;
        QTest::newRow("empty") << QByteArray("text") << QByteArray("") << QByteArray("");
        QTest::newRow("NUL bytes and invalid UTF-8") << QByteArray("text") << strange << strange;
        QTest::newRow("an owner without a list of forms") << QByteArray("old") << link << link;
        QTest::newRow("Latin-1 only")
            << QByteArray("latin1") << QByteArray("gr\xfc\xdf") << QByteArray("gr\xc3\xbc\xc3\x9f");
        QTest::newRow("text/plain only") << QByteArray("as:text/plain") << link << link;
        QTest::newRow("TEXT only") << QByteArray("as:TEXT") << link << link;
        QTest::newRow("with a charset only") << QByteArray("as:text/plain;charset=ISO-8859-1")
                                             << QByteArray("gr\xfc\xdf") << QByteArray("gr\xc3\xbc\xc3\x9f");
        QTest::newRow("in pieces") << QByteArray("pieces") << pieces << pieces;
        QTest::newRow("in pieces, empty") << QByteArray("pieces") << QByteArray("") << QByteArray("");
        QTest::newRow("in pieces, strange")
            << QByteArray("pieces") << strange.repeated(500) << strange.repeated(500);
        QTest::newRow("longer than one request")
            << QByteArray("text") << pieces.repeated(300) << pieces.repeated(300);
        QTest::newRow("marked, but as public") << QByteArray("mark-public") << link << link;
    }

    void textIsReadAsItsOwnerGivesIt()
    {
        QFETCH(QByteArray, mode);
        QFETCH(QByteArray, copied);
        QFETCH(QByteArray, text);
        QVERIFY(other_->copy(copied, mode));
        settle(1);
        QVERIFY(readNow() == Text(text.toStdString()));
    }

    void answersWithoutUsableTextAreNoText_data()
    {
        QTest::addColumn<QByteArray>("mode");
        for (const char *mode :
             {"image", "secret", "mark-empty", "mark-unreadable", "wrong-type", "wrong-format", "unwritten",
              "garbage-targets", "empty-targets", "dies", "pieces-die", "pieces-lie"})
            QTest::newRow(mode) << QByteArray(mode);
    }

    void answersWithoutUsableTextAreNoText()
    {
        QFETCH(QByteArray, mode);
        makePasteboard(stillTime_); // Found out by what comes, not by waiting.
        QVERIFY(other_->copy(QByteArray("https://example.com/?utm_source=a ").repeated(100), mode));
        settle(1);
        QCOMPARE(readNow(), Text());
    }

    void aSecretIsNotEvenAskedFor()
    {
        QVERIFY(other_->copy("hunter2", "secret"));
        settle(1);
        QCOMPARE(readNow(), Text());
        QVERIFY(other_->copy("hunter2", "mark-unreadable"));
        settle(2);
        QCOMPARE(readNow(), Text());
        QTRY_COMPARE(other_->asked(), QList<QByteArray>({"TARGETS", "x-kde-passwordManagerHint"}));
    }

    void anOwnerThatTakesTooLongIsGivenUp_data()
    {
        QTest::addColumn<QByteArray>("mode");
        for (const char *mode : {"silent", "pieces-stall", "pieces-endless"})
            QTest::newRow(mode) << QByteArray(mode);
    }

    void anOwnerThatTakesTooLongIsGivenUp()
    {
        QFETCH(QByteArray, mode);
        limits_.silence = 200ms;
        limits_.total = 400ms;
        makePasteboard();
        QVERIFY(other_->copy(QByteArray(5000, 'x'), mode));
        settle(1);
        QCOMPARE(readNow(), Text());

        QVERIFY(other_->copy("next"));
        settle(2);
        QCOMPARE(readNow(), Text("next"));
    }

    void anEndlessTextIsGivenUpAtTheSizeLimit()
    {
        limits_.bytes = 100000;
        makePasteboard(stillTime_);
        QVERIFY(other_->copy(QByteArray(5000, 'x'), "pieces-endless"));
        settle(1);
        QCOMPARE(readNow(), Text());
    }

    void anOwnerThatAnswersTooLateIsNotHarmed()
    {
        limits_.silence = 100ms;
        makePasteboard();
        QVERIFY(other_->copy("late but alive"));
        settle(1);
        other_->hang();
        QCOMPARE(readNow(), Text());
        other_->goOn();
        QTRY_COMPARE(other_->asked().size(), 1);
        QCOMPARE(readNow(), Text("late but alive"));
    }

    void aNewerCopyEndsTheReadingOfAnOlderOne()
    {
        CopyingProgram another(server_->environment());
        QVERIFY(other_->copy("never told"));
        settle(1);
        other_->hang();
        Answer older;
        read(*pasteboard_, older);
        QVERIFY(another.copy("newer"));
        QTRY_VERIFY(older.has_value());
        QCOMPARE(*older, Text());
        QCOMPARE(readNow(), Text("newer"));
        QCOMPARE(pasteboard_->changeCount(), 2);
    }

    void twoReadingsAtOnceBothGetTheText()
    {
        QVERIFY(other_->copy("for both"));
        settle(1);
        Answer first;
        Answer second;
        read(*pasteboard_, first);
        read(*pasteboard_, second);
        QTRY_VERIFY(first.has_value() && second.has_value());
        QCOMPARE(*first, Text("for both"));
        QCOMPARE(*second, Text("for both"));
    }

    void upToSixtyFourMebibytesAreRead()
    {
        QVERIFY(other_->copyFilled(64 * mebibyte));
        settle(1);
        const Text text = readNow();
        QVERIFY(text.has_value());
        QCOMPARE(qsizetype(text->size()), 64 * mebibyte);
        QVERIFY(text->find_first_not_of('x') == std::string::npos);

        QVERIFY(other_->copyFilled(64 * mebibyte + 1));
        settle(2);
        QCOMPARE(readNow(), Text());
    }

    void theEndOfTheOwnerIsNoChange()
    {
        QVERIFY(other_->copy("gone soon"));
        settle(1);
        other_->kill();
        QCOMPARE(readNow(), Text());
        QCOMPARE(pasteboard_->changeCount(), 1);
    }

    void anOwnWriteIsOneStepAndCanBePasted()
    {
        int calls = 0;
        pasteboard_->setChangeHandler([&calls] { ++calls; });
        QVERIFY(other_->copy("before"));
        settle(1);
        const std::string strange("a\0b \xff\xfe end", 10);
        pasteboard_->clear();
        QCOMPARE(pasteboard_->changeCount(), 2);
        pasteboard_->setString(strange);
        QCOMPARE(pasteboard_->changeCount(), 2);
        QVERIFY(other_->waitUntilLost(20s));

        QCOMPARE(readNow(), Text(strange));
        QCOMPARE(paste(server_->environment()), std::optional(QByteArray::fromStdString(strange)));
        QTRY_COMPARE(calls, 2);
        QCOMPARE(pasteboard_->changeCount(), 2);

        pasteboard_->clear();
        pasteboard_->setString(strange);
        QCOMPARE(pasteboard_->changeCount(), 3); // The same text again is a change as well.
        QTRY_COMPARE(calls, 3);
    }

    void aClearedClipboardHasNoText()
    {
        pasteboard_->clear();
        QCOMPARE(readNow(), Text());
        QCOMPARE(paste(server_->environment()), std::nullopt);
        offer(*pasteboard_, "on its own");
        QCOMPARE(pasteboard_->changeCount(), 2);
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("on its own"));
    }

    void oldProgramsGetTheFormsTheyKnow()
    {
        offer(*pasteboard_, "gr\xc3\xbc\xc3\x9f");
        QCOMPARE(paste(server_->environment(), u"STRING"_s), std::optional<QByteArray>("gr\xfc\xdf"));
        QCOMPARE(paste(server_->environment(), u"text/plain;charset=utf-8"_s),
                 std::optional<QByteArray>("gr\xc3\xbc\xc3\x9f"));
        QVERIFY(paste(server_->environment(), u"TARGETS"_s)->contains("UTF8_STRING"));
        QVERIFY(paste(server_->environment(), u"TIMESTAMP"_s));

        offer(*pasteboard_, "\xe2\x82\xac");
        QCOMPARE(paste(server_->environment(), u"STRING"_s), std::nullopt);
    }

    void aLongTextIsPastedInPieces()
    {
        const std::string text(std::size_t(3) * 1024 * 1024 + 17, 'y');
        offer(*pasteboard_, text);
        QVERIFY(paste(server_->environment()) == std::optional(QByteArray::fromStdString(text)));
    }

    void aCopyThatWeHaveNotHeardOfYetIsNotOverwritten()
    {
        QVERIFY(other_->copy("first"));
        settle(1);
        QCOMPARE(readNow(), Text("first"));
        // Copied while we are busy: the server knows of it, we do not.
        QVERIFY(copyUnheard(server_->environment(), "second"));

        pasteboard_->clear();
        pasteboard_->setString("first, cleaned");
        settle(3);
        QCOMPARE(readNow(), Text("second"));
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("second"));
    }

    void theTextOutlivesUsWhereAClipboardManagerTakesIt()
    {
        const XServer desktop;
        const SessionBus bus;
        QProcess manager;
        QProcessEnvironment environment = desktop.environment();
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, bus.address());
        manager.setProcessEnvironment(environment);
        manager.start(u"xfce4-clipman"_s, QStringList());
        QVERIFY(manager.waitForStarted());
        letComeToRest(manager);
        auto pasteboard = X11Pasteboard::create(scheduler_, desktop.display());
        offer(*pasteboard, "kept");
        QCOMPARE(paste(desktop.environment()), std::optional<QByteArray>("kept"));
        letComeToRest(manager); // This one keeps what it has read, and takes its time to read.
        pasteboard.reset();
        QCOMPARE(paste(desktop.environment()), std::optional<QByteArray>("kept"));
        manager.terminate();
        manager.waitForFinished();
    }

    void theEndOfTheServerIsReportedOnceAndEndsReadings()
    {
        XServer server;
        auto pasteboard = X11Pasteboard::create(scheduler_, server.display());
        CopyingProgram other(server.environment());
        QVERIFY(other.copy("x"));
        QTRY_COMPARE(pasteboard->changeCount(), 1);
        other.hang();
        int lost = 0;
        pasteboard->setLostHandler([&lost] { ++lost; });
        Answer answer;
        read(*pasteboard, answer);
        server.end();

        QTRY_COMPARE(lost, 1);
        QVERIFY(answer.has_value());
        QCOMPARE(*answer, Text());
        pasteboard->setString("into the void");
        answer.reset();
        read(*pasteboard, answer);
        QVERIFY(answer.has_value());
        QCOMPARE(*answer, Text());
        QCOMPARE(lost, 1);
    }
};

static const RegisteredTest<X11PasteboardTests> registered;
#include "X11PasteboardTests.moc"
