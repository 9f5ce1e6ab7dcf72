#include "SelectionReader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

// Words asked for at once: a reply is read in one go, so it must not be large.
constexpr std::uint32_t kWordsAtOnce = 64 * 1024;

std::string utf8FromLatin1(std::string_view latin1)
{
    std::string utf8;
    utf8.reserve(latin1.size());
    for (const char letter : latin1) {
        const auto code = static_cast<unsigned char>(letter);
        if (code < 0x80U) {
            utf8 += letter;
        } else {
            utf8 += static_cast<char>(0xC0U | (code >> 6U));
            utf8 += static_cast<char>(0x80U | (code & 0x3FU));
        }
    }
    return utf8;
}

std::vector<xcb_atom_t> atomsIn(std::string_view bytes)
{
    std::vector<xcb_atom_t> atoms(bytes.size() / sizeof(xcb_atom_t));
    std::memcpy(atoms.data(), bytes.data(), atoms.size() * sizeof(xcb_atom_t));
    return atoms;
}

} // namespace

SelectionReader::SelectionReader(XcbConnection &connection, Scheduler &scheduler, SelectionLimits limits,
                                 xcb_timestamp_t time, Done done)
    : connection_(connection)
    , scheduler_(scheduler)
    , limits_(limits)
    , time_(time)
    , done_(std::move(done))
    , window_(connection.makeWindow())
    , begun_(scheduler.now())
    , lastProgress_(begun_)
{
    convert(Step::targets, connection_.atom(XcbAtom::targets));
    watch(std::min(limits_.silence, limits_.total));
}

SelectionReader::~SelectionReader()
{
    if (window_ != XCB_NONE && !connection_.isLost())
        connection_.destroyWindow(window_);
}

std::optional<xcb_window_t> SelectionReader::releaseAwaitedWindow()
{
    if (!isAwaited_)
        return std::nullopt;
    return std::exchange(window_, XCB_NONE);
}

void SelectionReader::convert(Step step, xcb_atom_t target)
{
    step_ = step;
    target_ = target;
    isAwaited_ = true;
    isInPieces_ = false;
    answer_ = {};
    xcb_convert_selection(connection_.raw(), window_, connection_.atom(XcbAtom::clipboard), target,
                          connection_.atom(XcbAtom::transfer), time_);
    connection_.flush();
}

void SelectionReader::handleSelectionNotify(const xcb_selection_notify_event_t &event)
{
    if (!isAwaited_ || event.target != target_)
        return;
    isAwaited_ = false;
    noteProgress();
    if (event.property == connection_.atom(XcbAtom::transfer))
        fetch();
    else
        use({}); // Refused.
}

void SelectionReader::handlePropertyNotify(const xcb_property_notify_event_t &event)
{
    if (isInPieces_ && event.state == XCB_PROPERTY_NEW_VALUE &&
        event.atom == connection_.atom(XcbAtom::transfer))
        fetch();
}

// Reads the property from its beginning.
void SelectionReader::fetch()
{
    received_ = 0;
    fetchRest();
}

void SelectionReader::fetchRest()
{
    connection_.readProperty(window_, connection_.atom(XcbAtom::transfer), true,
                             static_cast<std::uint32_t>(received_ / 4), kWordsAtOnce,
                             [this, alive = std::weak_ptr(alive_)](const xcb_get_property_reply_t *reply) {
                                 if (!alive.expired())
                                     receive(reply);
                             });
}

void SelectionReader::receive(const xcb_get_property_reply_t *reply)
{
    noteProgress();
    if (reply == nullptr)
        return finish(std::nullopt);
    if (reply->type == XCB_NONE) // Announced, but not there. A piece that was fetched before is no news.
        return isInPieces_ ? void() : use({});
    if (!isInPieces_ && reply->type == connection_.atom(XcbAtom::incr))
        return beginPieces(*reply);

    const auto *bytes = static_cast<const char *>(xcb_get_property_value(reply));
    const auto size = static_cast<std::size_t>(xcb_get_property_value_length(reply));
    const bool isAsBefore = answer_.type == XCB_NONE || answer_.type == reply->type;
    if (!isAsBefore || answer_.bytes.size() + size + reply->bytes_after > limits_.bytes)
        return finish(std::nullopt);
    answer_.type = reply->type;
    answer_.format = reply->format;
    const bool isEndOfPieces = isInPieces_ && received_ == 0 && size == 0;
    if (isEndOfPieces)
        return use(std::exchange(answer_, {}));
    answer_.bytes.append(bytes, size);
    received_ += size;
    if (reply->bytes_after > 0)
        return size > 0 ? fetchRest() : finish(std::nullopt);
    if (!isInPieces_)
        use(std::exchange(answer_, {}));
}

// The owner begins to send as soon as its announcement is removed, which reading it has done.
void SelectionReader::beginPieces(const xcb_get_property_reply_t &reply)
{
    std::uint32_t announced = 0; // At least this many bytes will come.
    if (reply.format == 32 && reply.value_len > 0)
        std::memcpy(&announced, xcb_get_property_value(&reply), sizeof announced);
    if (announced > limits_.bytes || reply.bytes_after > 0)
        return finish(std::nullopt);
    isInPieces_ = true;
    answer_ = {};
}

void SelectionReader::use(const Answer &answer)
{
    switch (step_) {
    case Step::targets:
        return useTargets(answer);
    case Step::hint: // A mark that cannot be read counts as well.
        if (answer.type == XCB_NONE || answer.format != 8 || answer.bytes.starts_with("secret"))
            return finish(std::nullopt);
        return tryNextForm();
    case Step::text:
        return useText(answer);
    }
}

void SelectionReader::useTargets(const Answer &answer)
{
    // The best one last, where it is taken first.
    const std::array known = {xcb_atom_t(XCB_ATOM_STRING), connection_.atom(XcbAtom::plainTextUtf8),
                              connection_.atom(XcbAtom::utf8String)};
    if (answer.type == XCB_NONE) { // An old program without a list; it cannot mark anything as secret either.
        forms_ = {known.front(), known.back()};
        return tryNextForm();
    }
    const bool isList = answer.type == XCB_ATOM_ATOM || answer.type == connection_.atom(XcbAtom::targets);
    if (!isList || answer.format != 32)
        return finish(std::nullopt);
    const std::vector<xcb_atom_t> offered = atomsIn(answer.bytes);
    const auto isOffered = [&offered](xcb_atom_t form) {
        return std::find(offered.begin(), offered.end(), form) != offered.end();
    };
    std::copy_if(known.begin(), known.end(), std::back_inserter(forms_), isOffered);
    const xcb_atom_t hint = connection_.atom(XcbAtom::passwordManagerHint);
    if (!forms_.empty() && isOffered(hint))
        return convert(Step::hint, hint);
    tryNextForm();
}

void SelectionReader::useText(const Answer &answer)
{
    if (answer.format != 8)
        return tryNextForm();
    if (answer.type == connection_.atom(XcbAtom::utf8String) ||
        answer.type == connection_.atom(XcbAtom::plainTextUtf8))
        return finish(answer.bytes);
    if (answer.type == XCB_ATOM_STRING)
        return finish(utf8FromLatin1(answer.bytes));
    tryNextForm();
}

void SelectionReader::tryNextForm()
{
    if (forms_.empty())
        return finish(std::nullopt);
    const xcb_atom_t form = forms_.back();
    forms_.pop_back();
    convert(Step::text, form);
}

void SelectionReader::noteProgress()
{
    lastProgress_ = scheduler_.now();
}

void SelectionReader::watch(std::chrono::nanoseconds delay)
{
    scheduler_.after(delay, [this, alive = std::weak_ptr(alive_)] {
        if (alive.expired())
            return;
        const auto now = scheduler_.now();
        const auto left = std::min(lastProgress_ + limits_.silence, begun_ + limits_.total) - now;
        if (left <= std::chrono::nanoseconds::zero())
            return finish(std::nullopt);
        watch(left);
    });
}

void SelectionReader::finish(std::optional<std::string> text)
{
    // The last thing done here: the handler may destroy this object.
    if (const Done done = std::exchange(done_, nullptr))
        done(std::move(text));
}
