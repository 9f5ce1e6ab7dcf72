// When the clipboard is ours, and when not: at any time of the server, and whatever others pretend.
#include <VelmoraLinux/Clipboard/X11Pasteboard.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>

#include <QProcess>
#include <QTemporaryFile>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/CopyingProgram.h>
#include <TestBed/XServer.h>
#include <xcb/xfixes.h>

#include <array>
#include <chrono>
#include <cstring>
#include <ctime>
#include <optional>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

using Text = std::optional<std::string>;
using Outcome = std::optional<bool>;

constexpr std::chrono::milliseconds day = 24h;

// A program that says to the server, and to us, what it likes.
class Forger {
public:
    explicit Forger(const QByteArray &display)
        : x_(connectToXServer(display.constData()))
    {
    }

    [[nodiscard]] xcb_atom_t atom(std::string_view name) const
    {
        const auto cookie = xcb_intern_atom(x_.get(), 0, std::uint16_t(name.size()), name.data());
        return XcbReply<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(x_.get(), cookie, nullptr))->atom;
    }

    [[nodiscard]] xcb_window_t owner() const
    {
        const auto cookie = xcb_get_selection_owner(x_.get(), atom("CLIPBOARD"));
        return XcbReply<xcb_get_selection_owner_reply_t>(
                   xcb_get_selection_owner_reply(x_.get(), cookie, nullptr))
            ->owner;
    }

    [[nodiscard]] std::uint8_t firstXfixesEvent() const
    {
        return xcb_get_extension_data(x_.get(), &xcb_xfixes_id)->first_event;
    }

    template<typename Event>
    void send(xcb_window_t window, const Event &event) const
    {
        std::array<char, 32> bytes = {};
        std::memcpy(bytes.data(), &event, std::min(sizeof event, bytes.size()));
        xcb_send_event(x_.get(), 0, window, XCB_EVENT_MASK_NO_EVENT, bytes.data());
        (void)owner(); // Returns when the server has passed it on.
    }

    // Until the second call the server serves nobody else.
    void holdServer() const
    {
        xcb_grab_server(x_.get());
        (void)owner();
    }

    void releaseServer() const
    {
        xcb_ungrab_server(x_.get());
        (void)owner();
    }

    // From now on this program hears of changes of the window's properties, too.
    void watchProperties(xcb_window_t window) const
    {
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(x_.get(), window, XCB_CW_EVENT_MASK, &events);
        (void)owner();
    }

    void waitForProperty() const
    {
        while (const XcbReply<xcb_generic_event_t> event{xcb_wait_for_event(x_.get())})
            if (event->response_type == XCB_PROPERTY_NOTIFY)
                return;
    }

    // Asks for the clipboard as if it were that time.
    void ask(xcb_timestamp_t time) const
    {
        const xcb_window_t window = xcb_generate_id(x_.get());
        xcb_create_window(x_.get(), XCB_COPY_FROM_PARENT, window,
                          xcb_setup_roots_iterator(xcb_get_setup(x_.get())).data->root, -1, -1, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_convert_selection(x_.get(), window, atom("CLIPBOARD"), atom("UTF8_STRING"), atom("ANSWER"), time);
        xcb_flush(x_.get());
    }

    // Whether it gets what it has asked for; nothing while there is no answer.
    [[nodiscard]] std::optional<bool> answer() const
    {
        const XcbReply<xcb_generic_event_t> event(xcb_poll_for_event(x_.get()));
        if (!event || (event->response_type & 0x7fU) != XCB_SELECTION_NOTIFY)
            return std::nullopt;
        return reinterpret_cast<const xcb_selection_notify_event_t &>(*event).property != XCB_NONE;
    }

private:
    XcbServer x_;
};

} // namespace

class SelectionClaimTests : public QObject {
    Q_OBJECT

    QTemporaryFile shift_;
    std::optional<XServer> server_;
    EventLoopScheduler scheduler_;
    std::unique_ptr<X11Pasteboard> pasteboard_;
    std::unique_ptr<CopyingProgram> other_;

    // From now on the server's clock shows this much more than it would.
    void shiftClock(std::chrono::milliseconds by)
    {
        const qint64 milliseconds = by.count();
        QVERIFY(shift_.seek(0));
        QCOMPARE(shift_.write(reinterpret_cast<const char *>(&milliseconds), sizeof milliseconds),
                 qint64(sizeof milliseconds));
        QVERIFY(shift_.flush());
    }

    void write(const std::string &text, Outcome &outcome)
    {
        pasteboard_->clear();
        pasteboard_->setString(text, [&outcome](bool isOurs) {
            QVERIFY(!outcome);
            outcome = isOurs;
        });
        QVERIFY(!outcome); // Never from within the call.
    }

    [[nodiscard]] Outcome outcomeOf(const std::string &text)
    {
        Outcome outcome;
        write(text, outcome);
        (void)QTest::qWaitFor([&outcome] { return outcome.has_value(); }, 20000);
        return outcome;
    }

    // The server serves everybody who waits before it serves the same program again.
    static void passRounds(const Forger &forger)
    {
        for (int round = 0; round < 3; ++round)
            (void)forger.owner();
    }

    void passTurns() const
    {
        for (int turn = 0; turn < 5; ++turn)
            QTest::qWait(10);
    }

private Q_SLOTS:

    void init()
    {
        QVERIFY(shift_.isOpen() || shift_.open());
        shiftClock(0ms);
        server_.emplace(QStringList{u"LD_PRELOAD=" VELMORA_SHIFTED_CLOCK ""_s,
                                    u"VELMORA_CLOCK_SHIFT="_s + shift_.fileName()});
        QVERIFY(server_->isRunning());
        pasteboard_ = X11Pasteboard::create(scheduler_, server_->display());
        QVERIFY(pasteboard_);
        other_ = std::make_unique<CopyingProgram>(server_->environment());
    }

    void cleanup()
    {
        other_.reset();
        pasteboard_.reset();
        server_.reset();
    }

    void aWriteIsTakenAfterAnyTime_data()
    {
        QTest::addColumn<qint64>("days");
        for (const qint64 days : {0, 1, 24, 25, 30, 49, 50, 60, 75, 100})
            QTest::addRow("%lld days", days) << days;
    }

    // The server counts milliseconds in 32 bits and takes what is half of that away for the future.
    void aWriteIsTakenAfterAnyTime()
    {
        QFETCH(qint64, days);
        QVERIFY(other_->copy("copied"));
        QTRY_COMPARE(pasteboard_->changeCount(), 1);
        shiftClock(days * day);
        QCOMPARE(outcomeOf("cleaned"), Outcome(true));
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("cleaned"));
        QCOMPARE(pasteboard_->changeCount(), 2);
        QVERIFY(other_->copy("newer"));
        QTRY_COMPARE(pasteboard_->changeCount(), 3);
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("newer"));
    }

    void aWriteIsTakenWhenTheServersTimeBeginsAnew()
    {
        timespec now = {};
        QCOMPARE(clock_gettime(CLOCK_MONOTONIC, &now), 0);
        const auto uptime = std::chrono::milliseconds(now.tv_sec * 1000);
        const auto wrap = std::chrono::milliseconds(std::int64_t(1) << 32U);
        shiftClock(wrap - uptime - 30s); // The server's time ends within a minute.
        QVERIFY(other_->copy("copied"));
        QTRY_COMPARE(pasteboard_->changeCount(), 1);
        QCOMPARE(outcomeOf("cleaned"), Outcome(true));
        shiftClock(wrap - uptime + 30s);
        QCOMPARE(outcomeOf("cleaned again"), Outcome(true));
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("cleaned again"));
    }

    void whoAsksBehindTheEndOfTheServersTimeIsAnswered()
    {
        timespec now = {};
        QCOMPARE(clock_gettime(CLOCK_MONOTONIC, &now), 0);
        shiftClock(std::chrono::milliseconds(std::int64_t(1) << 32U) - now.tv_sec * 1000ms - 30s);
        QCOMPARE(outcomeOf("kept"), Outcome(true));
        const Forger later(server_->display());
        later.ask(5);
        std::optional<bool> answer;
        (void)QTest::qWaitFor([&] { return (answer = later.answer()).has_value(); });
        QCOMPARE(answer, std::optional(true));
    }

    // Who owns the clipboard for weeks answers all the same.
    void aTextIsServedAfterAnyTime()
    {
        QCOMPARE(outcomeOf("kept"), Outcome(true));
        for (const qint64 days : {20, 26, 40, 49, 51}) {
            shiftClock(days * day);
            QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("kept"));
        }
    }

    void aCopyBeforeTheClaimMakesItVoid()
    {
        QVERIFY(other_->copy("first"));
        QTRY_COMPARE(pasteboard_->changeCount(), 1);
        QVERIFY(copyUnheard(server_->environment(), "second"));
        Outcome outcome;
        write("first, cleaned", outcome);
        QTRY_VERIFY(outcome.has_value());
        QCOMPARE(outcome, Outcome(false));
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("second"));
    }

    // It was made when the server had told us the time and had not yet seen our claim.
    void aCopyBetweenTheQuestionAndTheClaimStays()
    {
        QVERIFY(other_->copy("first"));
        QTRY_COMPARE(pasteboard_->changeCount(), 1);
        Outcome outcome;
        write("first, cleaned", outcome);
        passRounds(Forger(server_->display())); // The server has answered by now.
        QVERIFY(copyUnheard(server_->environment(), "second"));
        QTRY_VERIFY(outcome.has_value());
        QCOMPARE(outcome, Outcome(false));
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("second"));
        QCOMPARE(pasteboard_->changeCount(), 3);
    }

    void aReplacedWriteIsNotOurs()
    {
        Outcome first;
        write("first", first);
        QCOMPARE(outcomeOf("second"), Outcome(true));
        QCOMPARE(first, Outcome(false));
    }

    // Its clock went back between its answer and our claim, which then comes from the future.
    void aClaimThatIsTurnedDownWithoutANewerCopyIsMadeAgain()
    {
        shiftClock(60s);
        QVERIFY(other_->copy("copied"));
        QTRY_COMPARE(pasteboard_->changeCount(), 1);
        Outcome outcome;
        write("cleaned", outcome);
        (void)Forger(server_->display()).owner(); // The server has answered by now.
        QTest::qSleep(100);
        shiftClock(0ms);
        QTRY_VERIFY(outcome.has_value());
        QCOMPARE(outcome, Outcome(true));
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("cleaned"));
        QCOMPARE(pasteboard_->changeCount(), 2);
    }

    // What follows from an outcome takes its time: a history is written, a notice drawn.
    void whoPastesAtOnceIsAnsweredBeforeTheOutcome()
    {
        QCOMPARE(outcomeOf("cleaned before"), Outcome(true));
        const Forger paster(server_->display());
        paster.watchProperties(paster.owner());
        bool isTold = false;
        std::optional<bool> answer;
        pasteboard_->clear();
        pasteboard_->setString("cleaned", [&](bool) {
            (void)paster.owner(); // What the server has for it has arrived.
            answer = paster.answer();
            isTold = true;
        });
        paster.waitForProperty(); // The server tells us the time.
        passRounds(paster);
        paster.holdServer();
        passTurns(); // We claim the clipboard, unheard.
        QVERIFY(!isTold);
        paster.releaseServer();
        passRounds(paster); // The server gives it to us and says so; our event loop does not run.
        paster.ask(XCB_CURRENT_TIME);
        passRounds(paster); // Its request follows the server's word.
        QTRY_VERIFY(isTold);
        QCOMPARE(answer, std::optional(true));
    }

    void theEndOfTheServerIsAnOutcome()
    {
        server_->end();
        QCOMPARE(outcomeOf("into the void"), Outcome(false));
    }

    void sentEventsAreNotBelieved()
    {
        QCOMPARE(outcomeOf("ours"), Outcome(true));
        const Forger forger(server_->display());
        const xcb_window_t window = forger.owner();
        xcb_xfixes_selection_notify_event_t change = {};
        change.response_type = std::uint8_t(forger.firstXfixesEvent() + XCB_XFIXES_SELECTION_NOTIFY);
        change.window = window;
        change.owner = 1;
        change.selection = forger.atom("CLIPBOARD");
        forger.send(window, change);
        xcb_selection_clear_event_t clear = {};
        clear.response_type = XCB_SELECTION_CLEAR;
        clear.owner = window;
        clear.selection = forger.atom("CLIPBOARD");
        forger.send(window, clear);
        xcb_destroy_notify_event_t destroyed = {};
        destroyed.response_type = XCB_DESTROY_NOTIFY;
        destroyed.window = window;
        forger.send(window, destroyed);
        passTurns();
        QCOMPARE(pasteboard_->changeCount(), 1);
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("ours"));
    }

    // Whoever believes this tells the server a wrong time and loses the clipboard.
    void aSentTimeIsNotBelieved()
    {
        QCOMPARE(outcomeOf("ours"), Outcome(true));
        const Forger forger(server_->display());
        const xcb_window_t window = forger.owner();
        Outcome outcome;
        xcb_property_notify_event_t time = {};
        time.response_type = XCB_PROPERTY_NOTIFY;
        time.window = window;
        time.atom = forger.atom("VELMORA_TIME");
        time.time = 1;
        forger.send(window, time);
        write("ours again", outcome);
        QTRY_VERIFY(outcome.has_value());
        QCOMPARE(outcome, Outcome(true));
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("ours again"));
    }
};

static const RegisteredTest<SelectionClaimTests> registered;
#include "SelectionClaimTests.moc"
