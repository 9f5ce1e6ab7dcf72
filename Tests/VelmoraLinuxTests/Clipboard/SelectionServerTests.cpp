// What other programs get when they ask for our text, in the ways that xclip does not.
#include <VelmoraLinux/Clipboard/X11Pasteboard.h>

#include <QElapsedTimer>
#include <QTest>

#include <Fakes/VirtualTime.h>
#include <Runner/RegisteredTest.h>
#include <TestBed/CopyingProgram.h>
#include <TestBed/XServer.h>
#include <poll.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace {

// A program that asks for the clipboard by hand.
class Requestor {
public:
    explicit Requestor(const QByteArray &display)
        : x_(xcb_connect(display.constData(), nullptr))
        , window_(xcb_generate_id(x_))
    {
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x_)).data->root;
        xcb_create_window(x_, 0, window_, root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0,
                          XCB_CW_EVENT_MASK, &events);
    }

    ~Requestor() { xcb_disconnect(x_); }

    Q_DISABLE_COPY_MOVE(Requestor)

    xcb_atom_t atom(const QByteArray &name)
    {
        const auto cookie = xcb_intern_atom(x_, 0, std::uint16_t(name.size()), name.constData());
        return XcbReply<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(x_, cookie, nullptr))->atom;
    }

    void ask(const QByteArray &target, xcb_timestamp_t time = XCB_CURRENT_TIME)
    {
        xcb_convert_selection(x_, window_, atom("CLIPBOARD"), atom(target), atom("ANSWER"), time);
        xcb_flush(x_);
    }

    void setWords(const QByteArray &property, const std::vector<std::uint32_t> &words)
    {
        xcb_change_property(x_, XCB_PROP_MODE_REPLACE, window_, atom(property), atom("ATOM_PAIR"), 32,
                            std::uint32_t(words.size()), words.data());
    }

    // The property of the answer, 0 when refused; nothing when there is no answer in time.
    std::optional<xcb_atom_t> answer()
    {
        std::optional<xcb_atom_t> property;
        (void)QTest::qWaitFor([&] {
            while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(x_)}) {
                if ((event->response_type & 0x7FU) == XCB_SELECTION_NOTIFY)
                    property = reinterpret_cast<const xcb_selection_notify_event_t &>(*event).property;
            }
            return property.has_value();
        });
        return property;
    }

    // How many answers have come since the last call.
    int answers()
    {
        int count = 0;
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(x_)})
            count += (event->response_type & 0x7FU) == XCB_SELECTION_NOTIFY ? 1 : 0;
        return count;
    }

    // Without the name of a property none is named.
    void askInto(const QByteArray &property)
    {
        xcb_convert_selection(x_, window_, atom("CLIPBOARD"), atom("UTF8_STRING"),
                              property.isEmpty() ? xcb_atom_t(XCB_NONE) : atom(property), XCB_CURRENT_TIME);
        xcb_flush(x_);
    }

    // Returns when the server has heard of everything so far.
    void synchronize() { (void)holds("ANSWER"); }

    bool holds(const QByteArray &property)
    {
        const auto cookie = xcb_get_property(x_, 0, window_, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 0);
        const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(x_, cookie, nullptr));
        return reply && reply->type != XCB_NONE;
    }

    // Reads and removes a property; nothing when there is none.
    std::optional<std::string> take(const QByteArray &property)
    {
        const auto cookie =
            xcb_get_property(x_, 1, window_, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1U << 24U);
        const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(x_, cookie, nullptr));
        if (!reply || reply->type == XCB_NONE)
            return std::nullopt;
        return std::string(static_cast<const char *>(xcb_get_property_value(reply.get())),
                           std::size_t(xcb_get_property_value_length(reply.get())));
    }

    // The next piece of a text; nothing when none comes.
    std::optional<std::string> nextPiece(int patienceMs = 5000)
    {
        std::optional<std::string> piece;
        (void)QTest::qWaitFor([&] { return (piece = take("ANSWER")).has_value(); }, patienceMs);
        return piece;
    }

    // Everything up to the empty piece.
    std::string allPieces()
    {
        std::string text;
        while (const auto piece = nextPiece()) {
            if (piece->empty())
                return text;
            text += *piece;
        }
        return "the end never came";
    }

    // Begins a transfer in pieces.
    bool begin()
    {
        ask("UTF8_STRING");
        return answer() == atom("ANSWER") && take("ANSWER")->size() == sizeof(std::uint32_t);
    }

private:
    xcb_connection_t *x_;
    xcb_window_t window_;
};

// A clipboard manager that takes the text when it is told that its owner is about to leave; a slow one only when the
// test is not over by then.
void manage(xcb_connection_t *x, bool isSlow, std::string &kept)
{
    constexpr int longestTestMs = 20000;
    const auto atom = [x](std::string_view name) {
        const auto cookie = xcb_intern_atom(x, 0, std::uint16_t(name.size()), name.data());
        return XcbReply<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(x, cookie, nullptr))->atom;
    };
    std::optional<xcb_selection_request_event_t> request;
    while (const XcbReply<xcb_generic_event_t> event{xcb_wait_for_event(x)}) {
        const unsigned type = event->response_type & 0x7FU;
        if (type == XCB_SELECTION_REQUEST) {
            pollfd next = {xcb_get_file_descriptor(x), POLLIN, 0};
            if (isSlow && poll(&next, 1, longestTestMs) > 0)
                return;
            request = reinterpret_cast<const xcb_selection_request_event_t &>(*event);
            xcb_convert_selection(x, request->owner, atom("CLIPBOARD"), atom("UTF8_STRING"), atom("KEPT"),
                                  XCB_CURRENT_TIME);
            xcb_flush(x);
        } else if (type == XCB_SELECTION_NOTIFY && request) {
            const auto cookie = xcb_get_property(x, 1, request->owner, atom("KEPT"), 0, 0, 1000);
            const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(x, cookie, nullptr));
            kept.assign(static_cast<const char *>(xcb_get_property_value(reply.get())),
                        std::size_t(xcb_get_property_value_length(reply.get())));
            xcb_selection_notify_event_t done = {};
            done.response_type = XCB_SELECTION_NOTIFY;
            done.requestor = request->requestor;
            done.selection = request->selection;
            done.target = request->target;
            done.property = request->property;
            std::array<char, 32> bytes = {};
            std::memcpy(bytes.data(), &done, sizeof done);
            xcb_send_event(x, 0, request->requestor, 0, bytes.data());
            xcb_flush(x);
        } else if (type == XCB_CLIENT_MESSAGE) {
            return; // The test is over.
        }
    }
}

} // namespace

class SelectionServerTests : public QObject {
    Q_OBJECT

    std::optional<XServer> server_;
    std::optional<VirtualTime> time_;
    std::unique_ptr<X11Pasteboard> pasteboard_;
    const std::string longText_ = std::string(700000, 'a') + std::string(700000, 'b');

    // Ends with the program beside a clipboard manager; how long that took.
    qint64 endBesideManager(bool isSlow, std::string &kept)
    {
        xcb_connection_t *x = xcb_connect(server_->display().constData(), nullptr);
        const xcb_window_t window = xcb_generate_id(x);
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
        xcb_create_window(x, 0, window, root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0, nullptr);
        const auto cookie = xcb_intern_atom(x, 0, 17, "CLIPBOARD_MANAGER");
        const xcb_atom_t manager =
            XcbReply<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(x, cookie, nullptr))->atom;
        xcb_set_selection_owner(x, window, manager, XCB_CURRENT_TIME);
        const auto question = xcb_get_selection_owner(x, manager);
        const XcbReply<xcb_get_selection_owner_reply_t> owner(
            xcb_get_selection_owner_reply(x, question, nullptr));
        Q_ASSERT(owner->owner == window);
        std::thread thread([x, isSlow, &kept] { manage(x, isSlow, kept); });

        QElapsedTimer clock;
        clock.start();
        pasteboard_.reset();
        const qint64 taken = clock.elapsed();
        xcb_client_message_event_t over = {};
        over.response_type = XCB_CLIENT_MESSAGE;
        over.format = 32;
        over.window = window;
        xcb_send_event(x, 0, window, 0, reinterpret_cast<const char *>(&over));
        xcb_flush(x);
        thread.join();
        xcb_disconnect(x);
        return taken;
    }

    // Returns when others get the text.
    void offer(const std::string &text)
    {
        bool isOurs = false;
        pasteboard_->setString(text, [&isOurs](bool ours) { isOurs = ours; });
        QTRY_VERIFY(isOurs);
    }

private Q_SLOTS:

    void initTestCase()
    {
        server_.emplace();
        QVERIFY(server_->isRunning());
    }

    void init()
    {
        time_.emplace();
        pasteboard_ = X11Pasteboard::create(*time_, server_->display());
        QVERIFY(pasteboard_);
    }

    void cleanup() { pasteboard_.reset(); }

    void severalFormsCanBeAskedForAtOnce()
    {
        offer("all at once");
        Requestor other(server_->display());
        other.setWords("ANSWER", {other.atom("UTF8_STRING"), other.atom("FIRST"), other.atom("image/png"),
                                  other.atom("SECOND"), other.atom("TARGETS"), other.atom("THIRD")});
        other.ask("MULTIPLE");
        QCOMPARE(other.answer(), std::optional(other.atom("ANSWER")));
        QCOMPARE(other.take("FIRST"), std::optional<std::string>("all at once"));
        QCOMPARE(other.take("SECOND"), std::nullopt);
        QVERIFY(other.take("THIRD").has_value());
        const std::string list = other.take("ANSWER").value_or("");
        std::array<xcb_atom_t, 6> pairs = {};
        QCOMPARE(list.size(), sizeof pairs);
        std::memcpy(pairs.data(), list.data(), sizeof pairs);
        QCOMPARE(pairs.at(1), other.atom("FIRST"));
        QCOMPARE(pairs.at(3), xcb_atom_t(XCB_NONE)); // Says that this one was refused.
    }

    void aRequestThatNamesNoPropertyGetsTheTextInThatOfTheTarget()
    {
        offer("for old programs");
        Requestor old(server_->display());
        old.askInto({});
        QCOMPARE(old.answer(), std::optional(old.atom("UTF8_STRING")));
        QCOMPARE(old.take("UTF8_STRING"), std::optional<std::string>("for old programs"));
    }

    void oneRequestGetsNoMoreThanAMebibyteAtOnce()
    {
        offer(std::string(200'000, 'x'));
        Requestor other(server_->display());
        std::vector<std::uint32_t> words;
        for (int i = 0; i < 60; ++i)
            words.insert(words.end(), {other.atom("UTF8_STRING"), other.atom("P" + QByteArray::number(i))});
        other.setWords("ANSWER", words);
        other.ask("MULTIPLE");
        QCOMPARE(other.answer(), std::optional(other.atom("ANSWER")));
        int given = 0;
        for (int i = 0; i < 60; ++i)
            given += other.holds("P" + QByteArray::number(i)) ? 1 : 0;
        QCOMPARE(given, 5);
        // The next request may have as much.
        QCOMPARE(paste(server_->environment())->size(), 200'000);
    }

    void aProgramThatBeginsManyTransfersGetsAFew()
    {
        offer(longText_);
        Requestor greedy(server_->display());
        for (int i = 0; i < 30; ++i)
            greedy.askInto("P" + QByteArray::number(i));
        greedy.synchronize();
        QVERIFY(paste(server_->environment()) == std::optional(QByteArray::fromStdString(longText_)));
        int begun = 0;
        for (int i = 0; i < 30; ++i)
            begun += greedy.holds("P" + QByteArray::number(i)) ? 1 : 0;
        QCOMPARE(begun, 8);
    }

    // A flood of requests is answered, but the program does other things in between.
    void aFloodOfRequestsDoesNotKeepUsFromTheRest()
    {
        offer("text");
        QTest::qWait(1); // What belongs to the claim is over.
        Requestor other(server_->display());
        constexpr int requests = 3000;
        for (int i = 0; i < requests; ++i)
            other.askInto("ANSWER");
        other.synchronize();
        int turns = 0;
        int answered = 0;
        while (answered < requests && turns < 100000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents);
            ++turns;
            other.synchronize();
            const int inThisTurn = other.answers();
            QVERIFY2(inThisTurn <= 500, qPrintable(QString::number(inThisTurn)));
            answered += inThisTurn;
        }
        QCOMPARE(answered, requests);
    }

    void aListOfFormsThatMakesNoSenseIsRefused()
    {
        offer("text");
        Requestor other(server_->display());
        other.setWords("ANSWER", {1, 2, 3});
        other.ask("MULTIPLE");
        QCOMPARE(other.answer(), std::optional(xcb_atom_t(XCB_NONE)));
    }

    void anEmptyListOfFormsIsAnswered()
    {
        offer("text");
        Requestor other(server_->display());
        other.setWords("ANSWER", {});
        other.ask("MULTIPLE");
        QCOMPARE(other.answer(), std::optional(other.atom("ANSWER")));
        QCOMPARE(other.take("ANSWER"), std::optional<std::string>(""));
    }

    void aRequestForAnEarlierOwnerIsRefused()
    {
        offer("first");
        Requestor other(server_->display());
        other.ask("TIMESTAMP");
        QVERIFY(other.answer().value_or(XCB_NONE) != XCB_NONE);
        xcb_timestamp_t since = 0;
        const std::string bytes = other.take("ANSWER").value_or("");
        QCOMPARE(bytes.size(), sizeof since);
        std::memcpy(&since, bytes.data(), sizeof since);

        other.ask("UTF8_STRING", since - 1);
        QCOMPARE(other.answer(), std::optional(xcb_atom_t(XCB_NONE)));
        other.ask("UTF8_STRING", since);
        QVERIFY(other.answer().value_or(XCB_NONE) != XCB_NONE);
    }

    void aTransferGoesOnWithItsTextWhenTheTextIsReplaced()
    {
        offer(longText_);
        Requestor slow(server_->display());
        QVERIFY(slow.begin());
        pasteboard_->clear();
        pasteboard_->setString("newer");
        QCOMPARE(paste(server_->environment()), std::optional<QByteArray>("newer"));
        QVERIFY(slow.allPieces() == longText_);
    }

    void aTransferGoesOnWhenAnotherProgramCopies()
    {
        offer(longText_);
        Requestor slow(server_->display());
        QVERIFY(slow.begin());
        CopyingProgram other(server_->environment());
        QVERIFY(other.copy("from elsewhere"));
        QTRY_COMPARE(pasteboard_->changeCount(), 2);
        QVERIFY(slow.allPieces() == longText_);
    }

    void aSideThatStopsTakingPiecesIsGivenUp()
    {
        offer(longText_);
        Requestor slow(server_->display());
        QVERIFY(slow.begin());
        QVERIFY(slow.nextPiece().has_value());
        QTRY_VERIFY(slow.holds("ANSWER")); // The next piece is there and stays untaken.
        time_->pass(11s);
        QVERIFY(slow.nextPiece().has_value());
        QCOMPARE(slow.nextPiece(300), std::nullopt);
        QVERIFY(paste(server_->environment()) == std::optional(QByteArray::fromStdString(longText_)));
    }

    void aSideThatEndsHarmsNobody()
    {
        offer(longText_);
        {
            Requestor shortLived(server_->display());
            QVERIFY(shortLived.begin());
        }
        QVERIFY(paste(server_->environment()) == std::optional(QByteArray::fromStdString(longText_)));
    }

    void aClipboardManagerGetsTheTextBeforeWeLeave()
    {
        offer("kept for later");
        QTRY_VERIFY(paste(server_->environment()).has_value());
        std::string kept;
        endBesideManager(false, kept);
        QCOMPARE(kept, std::string("kept for later"));
    }

    void aSlowClipboardManagerHasAMomentAndIsNotWaitedFor()
    {
        offer("lost");
        QTRY_VERIFY(paste(server_->environment()).has_value());
        std::string kept;
        QVERIFY(endBesideManager(true, kept) >= 150);
        QCOMPARE(kept, std::string()); // We had left before it asked.
    }
};

static const RegisteredTest<SelectionServerTests> registered;
#include "SelectionServerTests.moc"
