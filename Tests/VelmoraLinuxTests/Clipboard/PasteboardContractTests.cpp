#include "ClipboardSession.h"

#include <VelmoraLinux/Process/StartConditions.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

#include <utility>
#include <vector>

namespace {

using Text = std::optional<std::string>;
using MakeSession = std::unique_ptr<ClipboardSession> (*)();

} // namespace

Q_DECLARE_METATYPE(MakeSession)

// What every back end of `Pasteboard` promises. A new one is a row here, and keeps all of it.
class PasteboardContractTests : public QObject {
    Q_OBJECT

    EventLoopScheduler scheduler_;
    TransferLimits limits_;
    std::unique_ptr<ClipboardSession> session_;
    std::unique_ptr<Pasteboard> pasteboard_;
    int changes_ = 0; // Calls of the change handler.
    int losses_ = 0;

    static void addBackEnds()
    {
        QTest::addColumn<MakeSession>("makeSession");
        QTest::newRow("X11") << &makeX11Session;
        QTest::newRow("ext-data-control") << &makeExtSession;
        QTest::newRow("wlr-data-control") << &makeWlrSession;
    }

    void begin()
    {
        QFETCH(MakeSession, makeSession);
        session_ = makeSession();
        pasteboard_ = session_->makePasteboard(scheduler_, limits_);
        QVERIFY(pasteboard_);
        changes_ = losses_ = 0;
        pasteboard_->setChangeHandler([this] { ++changes_; });
        pasteboard_->setLostHandler([this] { ++losses_; });
    }

    void settle(qint64 count) { QTRY_COMPARE_WITH_TIMEOUT(pasteboard_->changeCount(), count, 20000); }

    // The answers to one question; there should be one.
    [[nodiscard]] std::vector<Text> read()
    {
        std::vector<Text> answers;
        pasteboard_->readString([&answers](Text text) { answers.push_back(std::move(text)); });
        (void)QTest::qWaitFor([&answers] { return !answers.empty(); }, 30000);
        QTest::qWait(0); // For a second one.
        return answers;
    }

    // Writes, and keeps what came of it.
    void write(const std::string &text, std::vector<bool> &outcomes)
    {
        pasteboard_->setString(text, [&outcomes](bool isOurs) { outcomes.push_back(isOurs); });
        QVERIFY(outcomes.empty()); // From the event loop only.
    }

private Q_SLOTS:

    void initTestCase() { StartConditions::ignoreWriteSignals(); }

    void init() { limits_ = {}; }

    void cleanup()
    {
        pasteboard_.reset();
        session_.reset();
    }

    void everyCopyIsOneStepAndOneCall_data() { addBackEnds(); }

    void everyCopyIsOneStepAndOneCall()
    {
        begin();
        const qint64 before = pasteboard_->changeCount();
        for (int copy = 1; copy <= 3; ++copy) {
            QVERIFY(session_->copyText("the same"));
            settle(before + copy);
        }
        if (pasteboard_->notifiesChanges())
            QTRY_COMPARE(changes_, 3);
    }

    void textIsReadByteForByte_data() { addBackEnds(); }

    void textIsReadByteForByte()
    {
        begin();
        const std::string strange("a\0b \xFF\xFE \xC3( \xED\xA0\x80 \r\nend", 19);
        QVERIFY(session_->copyText(strange));
        settle(1);
        QCOMPARE(read(), std::vector<Text>({strange}));
        const std::string large(std::size_t(3) * 1024 * 1024, 'x');
        QVERIFY(session_->copyText(large));
        settle(2);
        QVERIFY(read() == std::vector<Text>({large}));
    }

    void secretsAndImagesAreNoText_data() { addBackEnds(); }

    void secretsAndImagesAreNoText()
    {
        begin();
        QVERIFY(session_->copySecret("hunter2"));
        settle(1);
        QCOMPARE(read(), std::vector<Text>({std::nullopt}));
        QVERIFY(session_->copyImage());
        settle(2);
        QCOMPARE(read(), std::vector<Text>({std::nullopt}));
    }

    void textAboveTheLimitIsNoText_data() { addBackEnds(); }

    void textAboveTheLimitIsNoText()
    {
        limits_.bytes = 1000;
        begin();
        QVERIFY(session_->copyText(std::string(1000, 'x')));
        settle(1);
        QCOMPARE(read(), std::vector<Text>({std::string(1000, 'x')}));
        QVERIFY(session_->copyText(std::string(1001, 'x')));
        settle(2);
        QCOMPARE(read(), std::vector<Text>({std::nullopt}));
    }

    void othersPasteWhatIsWritten_data() { addBackEnds(); }

    void othersPasteWhatIsWritten()
    {
        begin();
        const std::string text("https://example.com/ \0 \xFF", 24);
        QVERIFY(session_->copyText("before"));
        settle(1);
        std::vector<bool> outcomes;
        pasteboard_->clear();
        write(text, outcomes);
        QTRY_COMPARE(outcomes, std::vector<bool>({true}));
        settle(2); // Clearing and writing are one change.
        QCOMPARE(session_->pasted(), Text(text));
        QCOMPARE(read(), std::vector<Text>({text}));
        QCOMPARE(outcomes.size(), std::size_t(1));
    }

    void aNewerWriteReplacesTheOneBefore_data() { addBackEnds(); }

    void aNewerWriteReplacesTheOneBefore()
    {
        begin();
        std::vector<bool> first;
        std::vector<bool> second;
        write("first", first);
        write("second", second);
        QTRY_COMPARE(second, std::vector<bool>({true}));
        QTRY_COMPARE(first, std::vector<bool>({false}));
        QCOMPARE(session_->pasted(), Text("second"));
    }

    void aNewerCopyStays_data() { addBackEnds(); }

    void aNewerCopyStays()
    {
        begin();
        QVERIFY(session_->copyText("seen"));
        settle(1);
        QVERIFY(session_->copyUnheard("not seen yet"));
        std::vector<bool> outcomes;
        pasteboard_->clear();
        write("too late", outcomes);
        QTRY_COMPARE(outcomes, std::vector<bool>({false}));
        settle(3); // The attempt counts too.
        QCOMPARE(read(), std::vector<Text>({std::string("not seen yet")}));
    }

    void withoutAClipboardThereIsNoTextAndNothingIsOurs_data() { addBackEnds(); }

    // A server of X11 ends for good, a compositor may come back.
    void withoutAClipboardThereIsNoTextAndNothingIsOurs()
    {
        begin();
        session_->end();
        QTRY_VERIFY_WITH_TIMEOUT(losses_ == 1 || pasteboard_->reach() == Pasteboard::Reach::none, 20000);
        QCOMPARE(read(), std::vector<Text>({std::nullopt}));
        std::vector<bool> outcomes;
        write("nobody gets it", outcomes);
        QTRY_COMPARE(outcomes, std::vector<bool>({false}));
        QVERIFY(losses_ <= 1);
    }
};

static const RegisteredTest<PasteboardContractTests> registered;
#include "PasteboardContractTests.moc"
