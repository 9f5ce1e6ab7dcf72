#include <VelmoraLinux/Clipboard/DataControlPasteboard.h>
#include <VelmoraLinux/Process/StartConditions.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>

#include <QTest>

#include <Fakes/VirtualTime.h>
#include <Runner/RegisteredTest.h>
#include <TestBed/DataControlServer.h>

#include <optional>

using namespace std::chrono_literals;
using Manner = DataControlServer::Manner;
using Protocol = DataControlServer::Protocol;

namespace {

using Text = std::optional<std::string>;

// What came of a reading: nothing as long as there is no answer.
using Answer = std::optional<Text>;

const std::string utf8 = "text/plain;charset=utf-8";
const std::string secretMark = "x-kde-passwordManagerHint";
const std::string trackedLink = "https://example.com/?utm_source=a";

void read(Pasteboard &pasteboard, Answer &answer)
{
    pasteboard.readString([&answer](Text text) { answer = std::move(text); });
}

} // namespace

Q_DECLARE_METATYPE(DataControlServer::Forms)
Q_DECLARE_METATYPE(std::string)

class DataControlPasteboardTests : public QObject {
    Q_OBJECT

    EventLoopScheduler scheduler_;
    VirtualTime stillTime_; // In which no limit is ever reached.
    std::optional<DataControlServer> server_;
    std::unique_ptr<DataControlPasteboard> pasteboard_;
    TransferLimits limits_;
    int calls_ = 0; // Of the change handler.

    void begin(Protocol protocol = Protocol::ext, int seats = 1)
    {
        server_.emplace(protocol, seats);
        makePasteboard();
    }

    void makePasteboard() { makePasteboard(scheduler_); }

    void makePasteboard(Scheduler &scheduler)
    {
        pasteboard_ =
            DataControlPasteboard::create(scheduler, {.display = server_->display(), .limits = limits_});
        QVERIFY(pasteboard_);
        pasteboard_->setChangeHandler([this] { ++calls_; });
    }

    [[nodiscard]] Text readNow()
    {
        Answer answer;
        read(*pasteboard_, answer);
        const bool isAnswered = QTest::qWaitFor([&answer] { return answer.has_value(); }, 30000);
        return isAnswered ? *answer : Text("no answer came");
    }

    void settle(qint64 count) { QTRY_COMPARE_WITH_TIMEOUT(pasteboard_->changeCount(), count, 20000); }

    [[nodiscard]] Text paste(const std::string &type) { return server_->pastedText(type); }

private Q_SLOTS:

    void initTestCase() { StartConditions::ignoreWriteSignals(); }

    void init()
    {
        limits_ = {};
        calls_ = 0;
    }

    void cleanup()
    {
        pasteboard_.reset();
        server_.reset();
    }

    void withoutSuchAClipboardThereIsNoPasteboard()
    {
        QVERIFY(!DataControlPasteboard::create(scheduler_, {.display = "/nowhere/at-all"}));
        server_.emplace(Protocol::none);
        QVERIFY(!DataControlPasteboard::create(scheduler_, {.display = server_->display()}));
    }

    void bothProtocolsDoTheSame_data()
    {
        QTest::addColumn<int>("protocol");
        QTest::newRow("ext") << int(Protocol::ext);
        QTest::newRow("wlr") << int(Protocol::wlr);
    }

    void bothProtocolsDoTheSame()
    {
        QFETCH(int, protocol);
        begin(Protocol(protocol));
        QCOMPARE(pasteboard_->reach(), Pasteboard::Reach::all);
        server_->copyText(trackedLink);
        settle(1);
        QCOMPARE(readNow(), Text(trackedLink));
        pasteboard_->clear();
        pasteboard_->setString("cleaned");
        QTRY_COMPARE(server_->changes(), 1);
        QCOMPARE(paste(utf8), Text("cleaned"));
        QCOMPARE(pasteboard_->changeCount(), 2);
    }

    void whatIsThereAtTheStartIsNoCopy()
    {
        server_.emplace(Protocol::ext);
        server_->copyText("from before");
        makePasteboard();
        QCOMPARE(readNow(), Text("from before"));
        QCOMPARE(pasteboard_->changeCount(), 0);
        server_->copyText("first");
        settle(1);
        QTRY_COMPARE(calls_, 1);
    }

    void everyCopyIsOneStepOfTheCountAlsoOfTheSameText()
    {
        begin();
        for (int i = 1; i <= 3; ++i) {
            server_->copyText("the same");
            settle(i);
        }
        QTRY_COMPARE(calls_, 3);
        QCOMPARE(readNow(), Text("the same"));
        QCOMPARE(pasteboard_->changeCount(), 3);
    }

    void textIsReadInItsBestForm_data()
    {
        QTest::addColumn<DataControlServer::Forms>("forms");
        QTest::addColumn<std::string>("text");
        const std::string strange("a\0b \xff\xfe \xc3( end", 13);
        const auto row = [](const char *name, const DataControlServer::Forms &forms,
                            const std::string &text) { QTest::newRow(name) << forms << text; };
        row("UTF-8 before all else", {{utf8, "best"}, {"text/plain", "b"}, {"STRING", "c"}, {"TEXT", "d"}},
            "best");
        row("an unknown encoding is passed over", {{"text/plain;charset=klingon", "?"}, {"TEXT", "known"}},
            "known");
        row("NUL bytes and invalid UTF-8", {{utf8, strange}}, strange);
        row("empty", {{utf8, ""}}, "");
        row("longer than a pipe", {{utf8, std::string(3000000, 'x')}}, std::string(3000000, 'x'));
        row("marked, but as public", {{secretMark, "public"}, {utf8, trackedLink}}, trackedLink);
    }

    void textIsReadInItsBestForm()
    {
        QFETCH(DataControlServer::Forms, forms);
        QFETCH(std::string, text);
        begin();
        server_->copy(forms);
        settle(1);
        QVERIFY(readNow() == Text(text));
    }

    void copiesWithoutUsableTextAreNoText_data()
    {
        QTest::addColumn<DataControlServer::Forms>("forms");
        QTest::addColumn<int>("questions");
        QTest::newRow("an image") << DataControlServer::Forms{{"image/png", "x"}, {"text/html", "y"}} << 0;
        QTest::newRow("a secret") << DataControlServer::Forms{{secretMark, "secret"}, {utf8, "x"}} << 1;
        QTest::newRow("a mark without content")
            << DataControlServer::Forms{{secretMark, ""}, {utf8, "x"}} << 1;
    }

    void copiesWithoutUsableTextAreNoText()
    {
        QFETCH(DataControlServer::Forms, forms);
        QFETCH(int, questions);
        begin();
        server_->copy(forms);
        settle(1);
        QCOMPARE(readNow(), Text());
        const auto asked = server_->asked();
        QCOMPARE(int(asked.size()), questions);
        QVERIFY(asked.empty() || asked.front() == secretMark);
    }

    void anOwnerThatTakesTooLongIsGivenUp_data()
    {
        QTest::addColumn<int>("manner");
        QTest::addColumn<DataControlServer::Forms>("forms");
        QTest::newRow("hangs") << int(Manner::silent) << DataControlServer::Forms{{utf8, "x"}};
        QTest::newRow("hangs over the mark")
            << int(Manner::silent) << DataControlServer::Forms{{utf8, "x"}, {secretMark, "public"}};
        QTest::newRow("does not end") << int(Manner::endless) << DataControlServer::Forms{{utf8, "x"}};
    }

    void anOwnerThatTakesTooLongIsGivenUp()
    {
        QFETCH(int, manner);
        QFETCH(DataControlServer::Forms, forms);
        limits_.silence = 200ms;
        limits_.total = 400ms;
        begin();
        server_->copy(forms, Manner(manner));
        settle(1);
        QCOMPARE(readNow(), Text());
        server_->copyText("next");
        settle(2);
        QCOMPARE(readNow(), Text("next"));
    }

    // Two gibibytes are on offer; nothing of them is kept when the limit is passed.
    void anEndlessTextIsGivenUpAtTheSizeLimit()
    {
        limits_.bytes = 1 << 20;
        server_.emplace(Protocol::ext);
        makePasteboard(stillTime_);
        server_->copy({{utf8, std::string(1 << 16, 'x')}}, Manner::endless);
        settle(1);
        QCOMPARE(readNow(), Text());
    }

    void theLimitItselfIsRead()
    {
        limits_.bytes = 1 << 20;
        begin();
        server_->copyText(std::string(1 << 20, 'x'));
        settle(1);
        QCOMPARE(readNow()->size(), std::size_t(1) << 20);
        server_->copyText(std::string((1 << 20) + 1, 'x'));
        settle(2);
        QCOMPARE(readNow(), Text());
    }

    void aNewerCopyEndsTheReadingOfAnOlderOne()
    {
        begin();
        server_->copy({{utf8, "never told"}}, Manner::silent);
        settle(1);
        Answer older;
        read(*pasteboard_, older);
        server_->copyText("newer");
        QTRY_VERIFY(older.has_value());
        QCOMPARE(*older, Text());
        QCOMPARE(readNow(), Text("newer"));
        QCOMPARE(pasteboard_->changeCount(), 2);
    }

    void twoReadingsAtOnceBothGetTheText()
    {
        begin();
        server_->copyText("for both");
        settle(1);
        Answer first;
        Answer second;
        read(*pasteboard_, first);
        read(*pasteboard_, second);
        QTRY_VERIFY(first.has_value() && second.has_value());
        QCOMPARE(*first, Text("for both"));
        QCOMPARE(*second, Text("for both"));
    }

    void theEndOfTheOwnerIsNoChange()
    {
        begin();
        server_->copyText("gone soon");
        settle(1);
        server_->clear();
        QTRY_COMPARE(readNow(), Text());
        QCOMPARE(pasteboard_->changeCount(), 1);
    }

    void anOwnWriteIsOneStepAndCanBePasted()
    {
        begin();
        const std::string strange("a\0b \xff\xfe end", 10);
        for (int i = 1; i <= 2; ++i) { // The same text again is a change as well.
            pasteboard_->clear();
            QCOMPARE(pasteboard_->changeCount(), i);
            pasteboard_->setString(strange);
            QCOMPARE(pasteboard_->changeCount(), i);
            QTRY_COMPARE(calls_, i);
            QCOMPARE(readNow(), Text(strange));
            QTRY_COMPARE(server_->changes(), i); // No emptiness in between.
            QCOMPARE(paste(utf8), Text(strange));
        }
        QCOMPARE(pasteboard_->changeCount(), 2);
        QCOMPARE(calls_, 2);
    }

    void ourTextIsOfferedUnderTheNamesThatProgramsKnow()
    {
        begin();
        pasteboard_->setString("plain");
        QTRY_COMPARE(server_->offered().size(), std::size_t(6)); // With the name by which we know it again.
        for (const char *type : {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "STRING", "TEXT"})
            QCOMPARE(paste(type), Text("plain"));
        QCOMPARE(paste(server_->offered().back()), Text(""));
        pasteboard_->setString("gr\xc3\xbc\xc3\x9f");
        QTRY_COMPARE(server_->offered().size(), std::size_t(4));
    }

    void aClearedClipboardHasNoText()
    {
        begin();
        server_->copyText("before");
        settle(1);
        pasteboard_->clear();
        QCOMPARE(readNow(), Text());
        QTRY_COMPARE(server_->changes(), 1);
        QCOMPARE(readNow(), Text());
        QCOMPARE(pasteboard_->changeCount(), 2);
        server_->copyText("after");
        settle(3);
        QCOMPARE(readNow(), Text("after"));
    }

    void aCopyReplacesOurText()
    {
        begin();
        pasteboard_->setString("ours");
        QTRY_COMPARE(server_->changes(), 1);
        server_->copyText("theirs");
        settle(2);
        QCOMPARE(readNow(), Text("theirs"));
        QTRY_COMPARE(calls_, 2);
    }

    void aCopyThatWeHaveNotHeardOfYetIsNotOverwritten()
    {
        begin();
        server_->copyText("first");
        settle(1);
        QCOMPARE(readNow(), Text("first"));
        server_->copyText("second"); // Told, but our event loop has not run.

        pasteboard_->clear();
        pasteboard_->setString("first, cleaned");
        QCOMPARE(pasteboard_->changeCount(), 2);
        settle(3);
        QCOMPARE(readNow(), Text("second"));
        QCOMPARE(server_->changes(), 0);
    }

    void aLongTextIsPastedWholeThoughOthersCloseEarly()
    {
        begin();
        const std::string text(std::size_t(3) * 1024 * 1024 + 17, 'y');
        pasteboard_->setString(text);
        QTRY_COMPARE(server_->changes(), 1);
        for (int i = 0; i < 3; ++i)
            (void)server_->paste(utf8); // Closed at once.
        QVERIFY(paste(utf8) == Text(text));
    }

    void thePrimarySelectionIsLeftAlone()
    {
        begin();
        server_->selectPrimary({{utf8, "marked with the mouse"}});
        server_->copyText("copied");
        settle(1);
        QCOMPARE(readNow(), Text("copied"));
        pasteboard_->setString("ours");
        QTRY_COMPARE(server_->changes(), 1);
        QCOMPARE(server_->primaryChanges(), 0);
    }

    void theFirstOfSeveralSeatsCounts()
    {
        begin(Protocol::ext, 2);
        server_->copy({{utf8, "of the second"}}, Manner::prompt, 1);
        server_->copyText("of the first");
        settle(1);
        QCOMPARE(readNow(), Text("of the first"));

        server_->removeSeat(0);
        QTRY_COMPARE(pasteboard_->reach(), Pasteboard::Reach::none);
        QTRY_COMPARE(pasteboard_->reach(), Pasteboard::Reach::all);
        QTRY_COMPARE(readNow(), Text("of the second"));
        QCOMPARE(pasteboard_->changeCount(), 1);
    }

    void aClipboardTakenFromUsIsAskedForAgain()
    {
        begin();
        server_->copyText("before");
        settle(1);
        int reaches = 0;
        pasteboard_->setReachHandler([&reaches] { ++reaches; });
        server_->finishDevices();
        QTRY_COMPARE(reaches, 2);
        QCOMPARE(pasteboard_->reach(), Pasteboard::Reach::all);
        server_->copyText("after");
        settle(2);
        QCOMPARE(readNow(), Text("after"));
    }

    void aCompositorThatComesBackIsFoundAgain()
    {
        begin();
        server_->copy({{utf8, "never told"}}, Manner::silent);
        settle(1);
        int reaches = 0;
        pasteboard_->setReachHandler([&reaches] { ++reaches; });
        Answer answer;
        read(*pasteboard_, answer);
        server_->stop();
        QTRY_COMPARE(reaches, 1);
        QCOMPARE(pasteboard_->reach(), Pasteboard::Reach::none);
        QTRY_VERIFY(answer.has_value());
        QVERIFY(answer->value_or("").empty()); // Empty where the owner's pipe was closed first.
        pasteboard_->clear();
        pasteboard_->setString("into the void");
        QCOMPARE(pasteboard_->changeCount(), 2);

        server_->start();
        QTRY_VERIFY_WITH_TIMEOUT(pasteboard_->reach() == Pasteboard::Reach::all, 20000);
        server_->copyText("back again");
        settle(3);
        QCOMPARE(readNow(), Text("back again"));
        pasteboard_->setString("ours");
        QTRY_COMPARE(server_->changes(), 1);
        QCOMPARE(paste(utf8), Text("ours"));
    }
};

static const RegisteredTest<DataControlPasteboardTests> registered;
#include "DataControlPasteboardTests.moc"
