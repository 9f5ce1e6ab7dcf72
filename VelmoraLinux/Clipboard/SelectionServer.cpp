#include "SelectionServer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

constexpr auto longestWayOfRequests = std::chrono::hours(1);
constexpr auto longestSilence = std::chrono::seconds(10);
constexpr std::size_t mostTargetsAtOnce = 64;
constexpr std::size_t mostBytesAtOnce = std::size_t(1024) * 1024;
constexpr std::ptrdiff_t mostTransfersOfOneProgram = 8;
constexpr std::size_t mostTransfers = 64;
constexpr std::size_t longestForOldPrograms = std::size_t(1024) * 1024;

// Nothing when the text has letters beyond Latin-1, or bytes that are no UTF-8.
std::optional<std::string> latin1FromUtf8(std::string_view utf8)
{
    std::string latin1;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        if (lead < 0x80U) {
            latin1 += utf8[i];
            continue;
        }
        const auto next = i + 1 < utf8.size() ? static_cast<unsigned char>(utf8[i + 1]) : 0U;
        if ((lead != 0xC2U && lead != 0xC3U) || (next & 0xC0U) != 0x80U)
            return std::nullopt;
        latin1 += static_cast<char>(((lead & 0x03U) << 6U) | (next & 0x3FU));
        ++i;
    }
    return latin1;
}

// Server times wrap around every 49 days.
bool isEarlier(xcb_timestamp_t a, xcb_timestamp_t b)
{
    return static_cast<std::int32_t>(a - b) < 0;
}

} // namespace

SelectionServer::SelectionServer(XcbConnection &connection, Scheduler &scheduler)
    : connection_(connection)
    , scheduler_(scheduler)
    , steps_(scheduler)
{
}

void SelectionServer::offer(std::optional<std::string> text)
{
    isOwner_ = true;
    text_.reset();
    latin1_.reset();
    if (!text)
        return;
    if (text->size() <= longestForOldPrograms) {
        if (auto latin1 = latin1FromUtf8(*text))
            latin1_ = std::make_shared<const std::string>(*std::move(latin1));
    }
    text_ = std::make_shared<const std::string>(*std::move(text));
}

void SelectionServer::setOwnedSince(xcb_timestamp_t time)
{
    ownedSince_ = time;
    ownedAt_ = scheduler_.now();
}

void SelectionServer::withdraw()
{
    isOwner_ = false;
    text_.reset();
    latin1_.reset();
    ownedSince_ = XCB_CURRENT_TIME;
}

std::vector<xcb_atom_t> SelectionServer::targets() const
{
    std::vector<xcb_atom_t> targets;
    if (text_)
        targets = {connection_.atom(XcbAtom::utf8String), connection_.atom(XcbAtom::plainTextUtf8),
                   connection_.atom(XcbAtom::plainText)};
    if (latin1_) {
        targets.push_back(XCB_ATOM_STRING);
        targets.push_back(connection_.atom(XcbAtom::text));
    }
    return targets;
}

void SelectionServer::handleRequest(const xcb_selection_request_event_t &request)
{
    xcb_selection_request_event_t asked = request;
    if (asked.property == XCB_NONE) // The way of very old programs.
        asked.property = asked.target;
    if (!isForUs(asked))
        return notify(asked, XCB_NONE);
    sentAtOnce_ = 0;
    if (asked.target != connection_.atom(XcbAtom::multiple)) {
        const bool isDone = convert(asked.requestor, asked.target, asked.property);
        return notify(asked, isDone ? asked.property : xcb_atom_t(XCB_NONE));
    }
    connection_.readProperty(
        asked.requestor, asked.property, false, 0, mostTargetsAtOnce * 2,
        steps_.guarded([this, asked](const auto *list) { answerMultiple(asked, list); }));
}

bool SelectionServer::isForUs(const xcb_selection_request_event_t &request) const
{
    if (!isOwner_ || request.selection != connection_.atom(XcbAtom::clipboard))
        return false;
    if (request.time == XCB_CURRENT_TIME || ownedSince_ == XCB_CURRENT_TIME)
        return true;
    // A request from before does not take long to arrive, and after some weeks every time looks earlier.
    return scheduler_.now() - ownedAt_ > longestWayOfRequests || !isEarlier(request.time, ownedSince_);
}

bool SelectionServer::convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property)
{
    if (target == connection_.atom(XcbAtom::targets)) {
        std::vector<std::uint32_t> targets = this->targets();
        for (const XcbAtom name :
             {XcbAtom::targets, XcbAtom::timestamp, XcbAtom::multiple, XcbAtom::saveTargets})
            targets.push_back(connection_.atom(name));
        write(requestor, property, XCB_ATOM_ATOM, targets);
        return true;
    }
    if (target == connection_.atom(XcbAtom::timestamp)) {
        write(requestor, property, XCB_ATOM_INTEGER, std::vector<std::uint32_t>{ownedSince_});
        return true;
    }
    if (target ==
        connection_.atom(XcbAtom::saveTargets)) { // Listed to say that we can; there is nothing to tell.
        write(requestor, property, connection_.atom(XcbAtom::null), std::string_view());
        return true;
    }
    Text text = textFor(target);
    if (!text)
        return false;
    const xcb_atom_t type = target == connection_.atom(XcbAtom::text) ? xcb_atom_t(XCB_ATOM_STRING) : target;
    return sendText(requestor, property, type, std::move(text));
}

SelectionServer::Text SelectionServer::textFor(xcb_atom_t target) const
{
    const std::array utf8 = {connection_.atom(XcbAtom::utf8String), connection_.atom(XcbAtom::plainTextUtf8),
                             connection_.atom(XcbAtom::plainText)};
    if (std::find(utf8.begin(), utf8.end(), target) != utf8.end())
        return text_;
    return target == XCB_ATOM_STRING || target == connection_.atom(XcbAtom::text) ? latin1_ : nullptr;
}

bool SelectionServer::sendText(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, Text text)
{
    if (text->size() <= connection_.largestChunk()) {
        sentAtOnce_ += text->size();
        if (sentAtOnce_ > mostBytesAtOnce)
            return false;
        write(requestor, property, type, *text);
        return true;
    }
    endTransfers([=](const Transfer &transfer) {
        return transfer.requestor == requestor && transfer.property == property;
    });
    if (!mayTransfer(requestor))
        return false;
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.raw(), requestor, XCB_CW_EVENT_MASK, &events);
    write(requestor, property, connection_.atom(XcbAtom::incr), {static_cast<std::uint32_t>(text->size())});
    transfers_.push_back({requestor, property, type, std::move(text), 0, scheduler_.now()});
    watchTransfers();
    return true;
}

// The windows of one program differ in the bits of the mask only.
bool SelectionServer::mayTransfer(xcb_window_t requestor) const
{
    const std::uint32_t mask = ~xcb_get_setup(connection_.raw())->resource_id_mask;
    const auto ofSameProgram =
        std::count_if(transfers_.begin(), transfers_.end(), [=](const Transfer &transfer) {
            return (transfer.requestor & mask) == (requestor & mask);
        });
    return ofSameProgram < mostTransfersOfOneProgram && transfers_.size() < mostTransfers;
}

void SelectionServer::handlePropertyNotify(const xcb_property_notify_event_t &event)
{
    if (event.state != XCB_PROPERTY_DELETE)
        return;
    const auto transfer =
        std::find_if(transfers_.begin(), transfers_.end(), [&event](const Transfer &candidate) {
            return candidate.requestor == event.window && candidate.property == event.atom;
        });
    if (transfer != transfers_.end())
        sendNextChunk(*transfer);
}

// After the last chunk an empty one, which says that this was all.
void SelectionServer::sendNextChunk(Transfer &transfer)
{
    const auto chunk = std::string_view(*transfer.text).substr(transfer.sent, connection_.largestChunk());
    write(transfer.requestor, transfer.property, transfer.type, chunk);
    connection_.flush();
    transfer.sent += chunk.size();
    transfer.lastProgress = scheduler_.now();
    if (chunk.empty())
        endTransfers(
            [requestor = transfer.requestor, property = transfer.property](const Transfer &candidate) {
                return candidate.requestor == requestor && candidate.property == property;
            });
}

void SelectionServer::handleDestroyNotify(const xcb_destroy_notify_event_t &event)
{
    endTransfers([&event](const Transfer &transfer) { return transfer.requestor == event.window; });
}

void SelectionServer::answerMultiple(const xcb_selection_request_event_t &request,
                                     const xcb_get_property_reply_t *list)
{
    const bool isList =
        list != nullptr && list->format == 32 && list->value_len % 2 == 0 && list->bytes_after == 0;
    if (!isList || !isForUs(request))
        return notify(request, XCB_NONE);
    sentAtOnce_ = 0;
    std::vector<std::uint32_t> pairs(list->value_len);
    if (!pairs.empty())
        std::memcpy(pairs.data(), xcb_get_property_value(list), pairs.size() * sizeof(std::uint32_t));
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
        const bool isAnswerable = pairs[i] != request.target && pairs[i + 1] != XCB_NONE;
        if (!isAnswerable || !convert(request.requestor, pairs[i], pairs[i + 1]))
            pairs[i + 1] = XCB_NONE;
    }
    write(request.requestor, request.property, connection_.atom(XcbAtom::atomPair), pairs);
    notify(request, request.property);
}

void SelectionServer::notify(const xcb_selection_request_event_t &request, xcb_atom_t property)
{
    xcb_selection_notify_event_t answer = {};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.time = request.time;
    answer.requestor = request.requestor;
    answer.selection = request.selection;
    answer.target = request.target;
    answer.property = property;
    static_assert(sizeof answer <= 32);
    std::array<char, 32> event = {}; // What is sent is always this long.
    std::memcpy(event.data(), &answer, sizeof answer);
    xcb_send_event(connection_.raw(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event.data());
    connection_.flush();
}

void SelectionServer::write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string_view bytes)
{
    xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(bytes.size()), bytes.data());
}

void SelectionServer::write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                            const std::vector<std::uint32_t> &words)
{
    xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, window, property, type, 32,
                        static_cast<std::uint32_t>(words.size()), words.data());
}

void SelectionServer::watchTransfers()
{
    if (std::exchange(isWatching_, true))
        return;
    steps_.after(longestSilence, [this] {
        isWatching_ = false;
        endTransfers([now = scheduler_.now()](const Transfer &transfer) {
            return transfer.lastProgress + longestSilence <= now;
        });
        if (!transfers_.empty())
            watchTransfers();
    });
}

template<typename Which>
void SelectionServer::endTransfers(Which which)
{
    const auto end = std::stable_partition(transfers_.begin(), transfers_.end(),
                                           [&which](const Transfer &transfer) { return !which(transfer); });
    const std::vector<Transfer> ended(std::make_move_iterator(end),
                                      std::make_move_iterator(transfers_.end()));
    transfers_.erase(end, transfers_.end());
    for (const Transfer &transfer : ended) {
        const bool isStillServed =
            std::any_of(transfers_.begin(), transfers_.end(),
                        [&](const Transfer &other) { return other.requestor == transfer.requestor; });
        const std::uint32_t noEvents = XCB_EVENT_MASK_NO_EVENT;
        if (!isStillServed)
            xcb_change_window_attributes(connection_.raw(), transfer.requestor, XCB_CW_EVENT_MASK, &noEvents);
    }
}
