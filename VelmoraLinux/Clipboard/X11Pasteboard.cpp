#include "X11Pasteboard.h"

#include <QDeadlineTimer>

#include <xcb/xfixes.h>

#include <algorithm>
#include <utility>

namespace {

// Some managers never answer: the user, who waits for the program to end, should not notice.
constexpr auto longestHandOver = std::chrono::milliseconds(150);
constexpr int mostClaims = 5; // Of one write that is turned down without a newer copy.

template<typename Event>
const Event &as(const xcb_generic_event_t &event)
{
    return reinterpret_cast<const Event &>(event);
}

} // namespace

std::unique_ptr<X11Pasteboard> X11Pasteboard::create(Scheduler &scheduler, const QByteArray &displayName,
                                                     TransferLimits limits, Reach reach)
{
    auto connection = XcbConnection::open(displayName);
    if (!connection)
        return nullptr;
    return std::unique_ptr<X11Pasteboard>(new X11Pasteboard(std::move(connection), scheduler, limits, reach));
}

X11Pasteboard::X11Pasteboard(std::unique_ptr<XcbConnection> connection, Scheduler &scheduler,
                             TransferLimits limits, Reach reach)
    : connection_(std::move(connection))
    , reach_(reach)
    , server_(*connection_, scheduler)
    , window_(connection_->makeWindow())
    , readings_(*connection_, scheduler, limits)
{
    connection_->setEventHandler([this](const xcb_generic_event_t &event) { handleEvent(event); });
    connection_->setLostHandler([this] { handleLoss(); });
    const auto watching = xcb_xfixes_select_selection_input_checked(
        connection_->raw(), window_, connection_->atom(XcbAtom::clipboard),
        XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
            XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
            XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    // Waits for the server, as opening the connection does: a copy that is made right behind this would else come first.
    const XcbReply<xcb_generic_error_t> refusal(xcb_request_check(connection_->raw(), watching));
    connection_->flush();
}

X11Pasteboard::~X11Pasteboard()
{
    changeHandler_ = nullptr;
    lostHandler_ = nullptr;
    waiting_.clear();
    readings_.abort();
    if (ownership_ != Ownership::none && server_.text() != nullptr && !connection_->isLost())
        handOver();
}

void X11Pasteboard::readString(TextHandler done)
{
    waiting_.push_back(std::move(done));
    if (connection_->isLost())
        return answerReaders(std::nullopt);
    if (ownership_ == Ownership::ours)
        return answerReaders(server_.text() == nullptr ? std::nullopt : std::optional(*server_.text()));
    if (ownership_ == Ownership::none && !readings_.isReading())
        beginReading();
    // Otherwise this one waits together with an earlier one, or until it is known whose the clipboard is.
}

void X11Pasteboard::clear()
{
    takeOver(std::nullopt);
    isJustCleared_ = true;
}

void X11Pasteboard::setString(std::string text, OutcomeHandler outcome)
{
    const bool isSameTakeOver = std::exchange(isJustCleared_, false);
    if (isSameTakeOver && ownership_ != Ownership::none)
        server_.offer(std::move(text));
    else
        takeOver(std::move(text));
    outcome_ = std::move(outcome);
    if (ownership_ == Ownership::none)
        settle(false);
    else if (ownership_ == Ownership::ours)
        settle(true);
}

void X11Pasteboard::takeOver(std::optional<std::string> text)
{
    ++changeCount_;
    settle(false);
    abortReading();
    if (connection_->isLost())
        return;
    server_.offer(std::move(text));
    claims_ = 0;
    askServerTime();
}

// A change of a property, even of none of its bytes, tells the time. The time of what we know may be weeks ago:
// the server then takes it for one to come.
void X11Pasteboard::askServerTime()
{
    ownership_ = Ownership::prepared;
    isOvertaken_ = false;
    server_.setOwnedSince(XCB_CURRENT_TIME); // Known when the server tells.
    xcb_change_property(connection_->raw(), XCB_PROP_MODE_APPEND, window_,
                        connection_->atom(XcbAtom::serverTime), XCB_ATOM_INTEGER, 32, 0, nullptr);
    connection_->flush();
}

void X11Pasteboard::claim(xcb_timestamp_t time)
{
    ownership_ = Ownership::claimed;
    ++claims_;
    claimSequence_ =
        xcb_set_selection_owner(connection_->raw(), window_, connection_->atom(XcbAtom::clipboard), time)
            .sequence;
    connection_->askSelectionOwner(connection_->atom(XcbAtom::clipboard),
                                   [this, claim = claimSequence_](xcb_window_t owner) {
                                       if (claim == claimSequence_ && ownership_ == Ownership::claimed)
                                           settleClaim(owner);
                                   });
}

void X11Pasteboard::settleClaim(xcb_window_t owner)
{
    isJustCleared_ = false;
    if (owner == window_) {
        ownership_ = Ownership::ours;
        settle(true);
    } else if (!isOvertaken_ && claims_ < mostClaims) {
        return askServerTime();
    } else {
        giveUpOwnership();
    }
    if (waiting_.empty())
        return;
    if (ownership_ == Ownership::ours)
        answerReaders(server_.text() == nullptr ? std::nullopt : std::optional(*server_.text()));
    else
        beginReading();
}

void X11Pasteboard::giveUpOwnership()
{
    ownership_ = Ownership::none;
    isJustCleared_ = false;
    server_.withdraw();
    settle(false);
}

// From the event loop: who pastes at this moment is answered before anything follows from it.
void X11Pasteboard::settle(bool isOurs)
{
    if (OutcomeHandler outcome = std::exchange(outcome_, nullptr))
        connection_->later([outcome = std::move(outcome), isOurs] { outcome(isOurs); });
}

void X11Pasteboard::handleEvent(const xcb_generic_event_t &event)
{
    constexpr unsigned sentByProgram = 0x80;
    const unsigned type = event.response_type & ~sentByProgram;
    // Owners send their answers; everything else is believed only when the server itself tells.
    if ((event.response_type & sentByProgram) != 0 && type != XCB_SELECTION_NOTIFY)
        return;
    if (type == connection_->firstXfixesEvent() + unsigned(XCB_XFIXES_SELECTION_NOTIFY))
        return handleOwnerChange(event);
    switch (type) {
    case XCB_SELECTION_NOTIFY:
        return handleSelectionNotify(as<xcb_selection_notify_event_t>(event));
    case XCB_PROPERTY_NOTIFY:
        return handlePropertyNotify(as<xcb_property_notify_event_t>(event));
    case XCB_SELECTION_REQUEST:
        return server_.handleRequest(as<xcb_selection_request_event_t>(event));
    case XCB_SELECTION_CLEAR:
        return handleSelectionClear(event);
    case XCB_DESTROY_NOTIFY:
        return server_.handleDestroyNotify(as<xcb_destroy_notify_event_t>(event));
    default:
        break;
    }
}

void X11Pasteboard::handleOwnerChange(const xcb_generic_event_t &event)
{
    const auto &change = as<xcb_xfixes_selection_notify_event_t>(event);
    latestChange_ = change.timestamp;
    if (change.subtype != XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER)
        return abortReading();     // The owner is gone, and nobody has taken its place.
    if (change.owner == window_) { // Counted when it was asked for.
        server_.setOwnedSince(change.selection_timestamp);
    } else {
        ++changeCount_;
        isOvertaken_ = true;
        if (!isBeforeClaim(event))
            giveUpOwnership();
        abortReading();
    }
    if (changeHandler_)
        changeHandler_();
}

void X11Pasteboard::handleSelectionClear(const xcb_generic_event_t &event)
{
    if (ownership_ != Ownership::prepared && !isBeforeClaim(event))
        giveUpOwnership();
}

// Whether the server had not yet seen our claim when this happened: its answer will tell who has the clipboard.
bool X11Pasteboard::isBeforeClaim(const xcb_generic_event_t &event) const
{
    const bool isClaimed = ownership_ == Ownership::claimed || ownership_ == Ownership::ours;
    return isClaimed && static_cast<std::int32_t>(event.full_sequence - claimSequence_) < 0;
}

void X11Pasteboard::handleSelectionNotify(const xcb_selection_notify_event_t &event)
{
    if (event.selection == connection_->atom(XcbAtom::clipboardManager)) {
        isHandedOver_ = true;
        return;
    }
    readings_.handleSelectionNotify(event);
}

void X11Pasteboard::handlePropertyNotify(const xcb_property_notify_event_t &event)
{
    if (event.window == window_ && event.atom == connection_->atom(XcbAtom::serverTime)) {
        if (ownership_ == Ownership::prepared)
            claim(event.time);
        return;
    }
    if (!readings_.handlePropertyNotify(event))
        server_.handlePropertyNotify(event);
}

void X11Pasteboard::handleLoss()
{
    giveUpOwnership();
    readings_.abort();
    answerReaders(std::nullopt);
    if (lostHandler_)
        lostHandler_();
}

void X11Pasteboard::beginReading()
{
    readings_.begin(SelectionReader::Aim::text, latestChange_,
                    [this](const std::optional<std::string> &text) { answerReaders(text); });
}

// Those who wait get nothing, from the event loop: the caller may be in the middle of something.
void X11Pasteboard::abortReading()
{
    readings_.abort();
    for (TextHandler &done : std::exchange(waiting_, {}))
        connection_->later([done = std::move(done)] { done(std::nullopt); });
}

void X11Pasteboard::answerReaders(const std::optional<std::string> &text)
{
    for (const TextHandler &done : std::exchange(waiting_, {}))
        done(text);
}

// Waits for another program: only here, where nothing else is left to be done.
void X11Pasteboard::handOver()
{
    xcb_connection_t *server = connection_->raw();
    const xcb_atom_t manager = connection_->atom(XcbAtom::clipboardManager);
    const XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(server, xcb_get_selection_owner(server, manager), nullptr));
    if (!owner || owner->owner == XCB_NONE)
        return;
    const std::vector<xcb_atom_t> targets = server_.targets();
    const xcb_atom_t property = connection_->atom(XcbAtom::transfer);
    xcb_change_property(server, XCB_PROP_MODE_REPLACE, window_, property, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(targets.size()), targets.data());
    xcb_convert_selection(server, window_, manager, connection_->atom(XcbAtom::saveTargets), property,
                          XCB_CURRENT_TIME);
    xcb_flush(server);
    // Real time, not the scheduler's: the event loop has ended.
    const QDeadlineTimer deadline(longestHandOver);
    while (!isHandedOver_ && !connection_->isLost() && !deadline.hasExpired())
        connection_->wait(std::chrono::milliseconds(deadline.remainingTime()));
}
