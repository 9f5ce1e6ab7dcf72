#include <VelmoraLinux/Clipboard/BridgedSecrets.h>
#include <VelmoraLinux/Clipboard/DataControlPasteboard.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>

#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/CopyingProgram.h>
#include <TestBed/DataControlServer.h>
#include <TestBed/XServer.h>

#include <optional>

using namespace std::chrono_literals;

// A program made for X11 copies, and a compositor passes it on without the mark of a secret.
class BridgedSecretsTests : public QObject {
    Q_OBJECT

    using Answer = std::optional<bool>;
    using Text = std::optional<std::string>;

    EventLoopScheduler scheduler_;
    std::optional<XServer> xServer_;
    std::optional<CopyingProgram> other_;
    std::unique_ptr<BridgedSecrets> secrets_;

    [[nodiscard]] std::unique_ptr<DataControlPasteboard> pasteboardIn(const DataControlServer &compositor)
    {
        auto pasteboard = DataControlPasteboard::create(scheduler_, {.display = compositor.display()});
        if (pasteboard)
            pasteboard->setBridgedSecrets(std::move(secrets_));
        return pasteboard;
    }

    // The program made for X11 copies, and the compositor passes the text on, but no mark.
    [[nodiscard]] bool copyThrough(DataControlServer &compositor, const Pasteboard &pasteboard,
                                   const QByteArray &text, const QByteArray &mode = "text")
    {
        const auto before = pasteboard.changeCount();
        if (!other_->copy(text, mode))
            return false;
        compositor.copyText(text.toStdString());
        return QTest::qWaitFor([&] { return pasteboard.changeCount() == before + 1; });
    }

    static Text readNow(Pasteboard &pasteboard)
    {
        std::optional<Text> answer;
        pasteboard.readString([&answer](Text text) { answer = std::move(text); });
        return QTest::qWaitFor([&answer] { return answer.has_value(); }) ? *answer : Text("no answer came");
    }

private Q_SLOTS:

    void init()
    {
        xServer_.emplace();
        other_.emplace(xServer_->environment());
        secrets_ = BridgedSecrets::create(scheduler_, xServer_->display());
        QVERIFY(secrets_);
    }

    void cleanup()
    {
        secrets_.reset();
        other_.reset();
        xServer_.reset();
    }

    void withoutAnXServerThereAreNone() { QVERIFY(!BridgedSecrets::create(scheduler_, ":29999")); }

    void anOwnerIsAskedForNothingButItsMarks_data()
    {
        QTest::addColumn<QByteArray>("mode"); // Of selection-owner; empty: nobody owns the clipboard.
        QTest::addColumn<bool>("mayBeRead");
        QTest::addColumn<bool>("isMarkRead");
        QTest::newRow("text") << QByteArray("text") << true << false;
        QTest::newRow("a secret") << QByteArray("secret") << false << true;
        QTest::newRow("an empty mark") << QByteArray("mark-empty") << false << true;
        QTest::newRow("a mark that is refused") << QByteArray("mark-unreadable") << false << true;
        QTest::newRow("marked as public") << QByteArray("mark-public") << true << true;
        QTest::newRow("without a list of targets") << QByteArray("old") << true << false;
        QTest::newRow("Latin-1") << QByteArray("latin1") << true << false;
        QTest::newRow("a picture") << QByteArray("image") << true << false;
        QTest::newRow("a list that makes no sense") << QByteArray("garbage-targets") << false << false;
        QTest::newRow("an owner that never answers") << QByteArray("silent") << false << false;
        QTest::newRow("nobody") << QByteArray() << true << false;
    }

    void anOwnerIsAskedForNothingButItsMarks()
    {
        QFETCH(QByteArray, mode);
        QFETCH(bool, mayBeRead);
        QFETCH(bool, isMarkRead);
        if (!mode.isEmpty())
            QVERIFY(other_->copy("hidden", mode));
        if (mode == "silent")
            secrets_ = BridgedSecrets::create(scheduler_, xServer_->display(), {.silence = 100ms});
        Answer answer;
        secrets_->ask([&answer](bool mayRead) { answer = mayRead; });
        QVERIFY(!answer); // From the event loop only.
        QTRY_VERIFY(answer.has_value());
        QCOMPARE(*answer, mayBeRead);
        QList<QByteArray> expected;
        if (!mode.isEmpty())
            expected << "TARGETS";
        if (isMarkRead)
            expected << "x-kde-passwordManagerHint";
        QTRY_COMPARE(other_->asked(), expected); // What it says arrives later than what it answers.
    }

    void aFurtherQuestionMakesTheOneBeforeVoid()
    {
        QVERIFY(other_->copy("x", "silent"));
        Answer first;
        Answer second;
        secrets_->ask([&first](bool mayRead) { first = mayRead; });
        QTRY_COMPARE(other_->asked(), QList<QByteArray>{"TARGETS"});
        QVERIFY(other_->copy("x"));
        secrets_->ask([&second](bool mayRead) { second = mayRead; });
        QTRY_VERIFY(second.has_value());
        QCOMPARE(*second, true);
        QVERIFY(!first);
    }

    void withTheServerTheirProgramsHaveEnded()
    {
        QVERIFY(other_->copy("x", "silent"));
        Answer waiting;
        secrets_->ask([&waiting](bool mayRead) { waiting = mayRead; });
        QTRY_COMPARE(other_->asked(), QList<QByteArray>{"TARGETS"});
        xServer_->end();
        QTRY_VERIFY(waiting.has_value());
        QCOMPARE(*waiting, true);
        Answer later;
        secrets_->ask([&later](bool mayRead) { later = mayRead; });
        QTRY_VERIFY(later.has_value());
        QCOMPARE(*later, true);
    }

    void aSecretWhoseMarkTheCompositorDroppedIsNotRead()
    {
        DataControlServer compositor(DataControlServer::Protocol::wlr);
        const auto pasteboard = pasteboardIn(compositor);
        QVERIFY(pasteboard);
        QVERIFY(copyThrough(compositor, *pasteboard, "hidden", "secret"));
        QCOMPARE(readNow(*pasteboard), Text());
        QVERIFY(compositor.asked().empty());

        QVERIFY(copyThrough(compositor, *pasteboard, "shown"));
        QCOMPARE(readNow(*pasteboard), Text("shown"));
    }

    // A program made for X11 that hangs, or has a secret, stays the owner there when another one copies on KWin 5.27.
    void anOfferWithNamesThatWouldHaveBeenDroppedIsNotAskedFor()
    {
        DataControlServer compositor(DataControlServer::Protocol::wlr);
        const auto pasteboard = pasteboardIn(compositor);
        QVERIFY(pasteboard);
        QVERIFY(other_->copy("hidden", "silent"));
        compositor.copy({{"text/plain;charset=utf-8", "shown"}, {"UTF8_STRING", "shown"}});
        QTRY_COMPARE(pasteboard->changeCount(), 1);
        QCOMPARE(readNow(*pasteboard), Text("shown"));
        QVERIFY(other_->asked().isEmpty());
    }

    void aNewerCopyEndsTheQuestionForAnOlderOne()
    {
        DataControlServer compositor(DataControlServer::Protocol::ext);
        const auto pasteboard = pasteboardIn(compositor);
        QVERIFY(pasteboard);
        QVERIFY(copyThrough(compositor, *pasteboard, "hanging", "silent"));
        std::optional<Text> first;
        pasteboard->readString([&first](Text text) { first = std::move(text); });
        QTRY_COMPARE(other_->asked(), QList<QByteArray>{"TARGETS"});

        QVERIFY(copyThrough(compositor, *pasteboard, "newer"));
        QTRY_VERIFY(first.has_value());
        QCOMPARE(*first, Text());
        QCOMPARE(readNow(*pasteboard), Text("newer"));
    }
};

static const RegisteredTest<BridgedSecretsTests> registered;
#include "BridgedSecretsTests.moc"
