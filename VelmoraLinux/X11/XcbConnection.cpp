#include "XcbConnection.h"

#include <poll.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

constexpr std::array<std::string_view, static_cast<std::size_t>(XcbAtom::count_)> atomNames = {
    "CLIPBOARD",
    "CLIPBOARD_MANAGER",
    "TARGETS",
    "TIMESTAMP",
    "MULTIPLE",
    "SAVE_TARGETS",
    "ATOM_PAIR",
    "INCR",
    "NULL",
    "UTF8_STRING",
    "text/plain;charset=utf-8",
    "text/plain",
    "TEXT",
    "x-kde-passwordManagerHint",
    "VELMORA_TRANSFER",
    "VELMORA_TIME"};

// Large chunks save round trips, small ones keep every single write and read short.
constexpr std::size_t preferredChunk = std::size_t(256) * 1024;
constexpr std::size_t requestHead = 64;
constexpr std::size_t mostAtomNames = 4096;
constexpr int mostInOneTurn = 100; // Events and replies.

} // namespace

std::unique_ptr<XcbConnection> XcbConnection::open(const QByteArray &displayName)
{
    XcbServer server = connectToXServer(displayName.isEmpty() ? nullptr : displayName.constData());
    if (!server)
        return nullptr;
    std::unique_ptr<XcbConnection> connection(new XcbConnection(std::move(server)));
    return connection->prepare() ? std::move(connection) : nullptr;
}

XcbConnection::XcbConnection(XcbServer connection)
    : connection_(std::move(connection))
{
    stepTimer_.setSingleShot(true);
    QObject::connect(&stepTimer_, &QTimer::timeout, &stepTimer_, [this] {
        for (const auto &step : std::exchange(steps_, {}))
            step();
    });
}

XcbConnection::~XcbConnection() = default;

bool XcbConnection::prepare()
{
    const xcb_query_extension_reply_t *xfixes = xcb_get_extension_data(raw(), &xcb_xfixes_id);
    if (xfixes == nullptr || xfixes->present == 0)
        return false;
    firstXfixesEvent_ = xfixes->first_event;
    const auto version = xcb_xfixes_query_version(raw(), 1, 0);

    std::array<xcb_intern_atom_cookie_t, atomNames.size()> cookies = {};
    std::transform(atomNames.begin(), atomNames.end(), cookies.begin(), [this](std::string_view name) {
        return xcb_intern_atom(raw(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    });
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(raw(), cookies.at(i), nullptr));
        if (!reply)
            return false;
        atoms_.at(i) = reply->atom;
    }
    const XcbReply<xcb_xfixes_query_version_reply_t> known(
        xcb_xfixes_query_version_reply(raw(), version, nullptr));
    root_ = xcb_setup_roots_iterator(xcb_get_setup(raw())).data->root;
    const std::size_t largestRequest = std::size_t(xcb_get_maximum_request_length(raw())) * 4;
    largestChunk_ = std::min(preferredChunk, largestRequest - requestHead);

    notifier_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(raw()), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { deliver(); });
    return known != nullptr;
}

xcb_window_t XcbConnection::makeWindow() const
{
    const xcb_window_t window = xcb_generate_id(raw());
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(raw(), XCB_COPY_FROM_PARENT, window, root_, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    return window;
}

void XcbConnection::destroyWindow(xcb_window_t window)
{
    xcb_destroy_window(raw(), window);
    flush();
}

void XcbConnection::readProperty(xcb_window_t window, xcb_atom_t property, bool remove, std::uint32_t offset,
                                 std::uint32_t words, PropertyHandler handler)
{
    const auto cookie =
        xcb_get_property(raw(), remove ? 1 : 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, offset, words);
    pendingReplies_.push_back({cookie.sequence, [handler = std::move(handler)](void *reply) {
                                   handler(static_cast<const xcb_get_property_reply_t *>(reply));
                               }});
    flush();
}

void XcbConnection::askSelectionOwner(xcb_atom_t selection, OwnerHandler handler)
{
    const auto cookie = xcb_get_selection_owner(raw(), selection);
    pendingReplies_.push_back(
        {cookie.sequence, [handler = std::move(handler)](void *reply) {
             handler(reply == nullptr ? xcb_window_t(XCB_NONE)
                                      : static_cast<xcb_get_selection_owner_reply_t *>(reply)->owner);
         }});
    flush();
}

void XcbConnection::askAtomNames(const std::vector<xcb_atom_t> &atoms, NamesHandler handler)
{
    if (atomNames_.size() > mostAtomNames)
        atomNames_.clear();
    for (const xcb_atom_t atom : atoms) {
        if (!atomNames_.try_emplace(atom).second)
            continue;
        const auto cookie = xcb_get_atom_name(raw(), atom);
        pendingReplies_.push_back({cookie.sequence, [this, atom](void *reply) {
                                       if (reply == nullptr)
                                           return;
                                       const auto *name = static_cast<xcb_get_atom_name_reply_t *>(reply);
                                       atomNames_[atom].assign(xcb_get_atom_name_name(name), name->name_len);
                                   }});
    }
    // Replies come in order: with this one all names are there, those asked for earlier included.
    askSelectionOwner(XCB_ATOM_PRIMARY,
                      [this, atoms, handler = std::move(handler)](xcb_window_t) { handler(namesOf(atoms)); });
}

std::vector<std::string> XcbConnection::namesOf(const std::vector<xcb_atom_t> &atoms) const
{
    std::vector<std::string> names;
    names.reserve(atoms.size());
    for (const xcb_atom_t atom : atoms) {
        const auto known = atomNames_.find(atom);
        names.push_back(known == atomNames_.end() ? std::string() : known->second);
    }
    return names;
}

void XcbConnection::flush()
{
    xcb_flush(raw());
    // Flushing may have taken events from the socket, which the notifier then does not report.
    deliverLater();
}

void XcbConnection::deliverLater()
{
    if (std::exchange(isDeliveryPlanned_, true))
        return;
    later([this] {
        isDeliveryPlanned_ = false;
        deliver();
    });
}

void XcbConnection::later(std::function<void()> step)
{
    steps_.push_back(std::move(step));
    stepTimer_.start();
}

void XcbConnection::wait(std::chrono::milliseconds limit)
{
    if (deliver())
        return;
    pollfd socket = {xcb_get_file_descriptor(raw()), POLLIN, 0};
    poll(&socket, 1, static_cast<int>(limit.count()));
    deliver();
}

bool XcbConnection::deliver()
{
    int delivered = 0;
    while (!isLost_ && delivered < mostInOneTurn && (deliverEvent() || deliverReply()))
        ++delivered;
    if (delivered == mostInOneTurn)
        deliverLater();
    if (!isLost_ && xcb_connection_has_error(raw()) != 0)
        lose();
    return delivered > 0 || isLost_;
}

bool XcbConnection::deliverEvent()
{
    const XcbReply<xcb_generic_event_t> event(xcb_poll_for_event(raw()));
    if (!event)
        return false;
    // xcb keeps events and replies apart; they are delivered here in the order in which things happened.
    const auto isAnsweredBefore = [&event](const PendingReply &pending) {
        return static_cast<std::int32_t>(pending.sequence - event->full_sequence) <= 0;
    };
    while (!pendingReplies_.empty() && isAnsweredBefore(pendingReplies_.front()) && deliverReply())
        continue;
    // Errors tell of windows that went away meanwhile; what waits for them has a time limit.
    if (event->response_type != 0 && eventHandler_)
        eventHandler_(*event);
    return true;
}

bool XcbConnection::deliverReply()
{
    if (pendingReplies_.empty())
        return false;
    void *reply = nullptr;
    xcb_generic_error_t *error = nullptr;
    if (xcb_poll_for_reply(raw(), pendingReplies_.front().sequence, &reply, &error) == 0)
        return false;
    const XcbReply<void> keptReply(reply);
    const XcbReply<xcb_generic_error_t> keptError(error);
    const PendingReply pending = std::move(pendingReplies_.front());
    pendingReplies_.pop_front();
    pending.handler(reply);
    return true;
}

void XcbConnection::lose()
{
    isLost_ = true;
    notifier_->setEnabled(false);
    for (const PendingReply &pending : std::exchange(pendingReplies_, {}))
        pending.handler(nullptr);
    if (lostHandler_)
        lostHandler_();
}
