#include "SelectionReader.h"

#include "PlainText.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

// Words asked for at once: a reply is read in one go, so it must not be large.
constexpr std::uint32_t wordsAtOnce = 64 * 1024;

std::vector<xcb_atom_t> atomsIn(std::string_view bytes)
{
    std::vector<xcb_atom_t> atoms(bytes.size() / sizeof(xcb_atom_t));
    if (!atoms.empty())
        std::memcpy(atoms.data(), bytes.data(), atoms.size() * sizeof(xcb_atom_t));
    return atoms;
}

} // namespace

SelectionReader::SelectionReader(XcbConnection &connection, Scheduler &scheduler, TransferLimits limits,
                                 Aim aim, xcb_timestamp_t time, Done done)
    : connection_(connection)
    , mostBytes_(limits.bytes)
    , aim_(aim)
    , time_(time)
    , done_(std::move(done))
    , requestor_(connection.makeWindow())
    , deadline_(scheduler, limits, [this] { finish(std::nullopt); })
    , steps_(scheduler)
{
    convert(Step::targets, connection_.atom(XcbAtom::targets));
}

SelectionReader::~SelectionReader()
{
    if (requestor_ != XCB_NONE && !connection_.isLost())
        connection_.destroyWindow(requestor_);
}

std::optional<xcb_window_t> SelectionReader::releasePendingRequestor()
{
    if (!isPending_)
        return std::nullopt;
    return std::exchange(requestor_, XCB_NONE);
}

void SelectionReader::convert(Step step, xcb_atom_t target)
{
    step_ = step;
    target_ = target;
    isPending_ = true;
    isIncremental_ = false;
    answer_ = {};
    xcb_convert_selection(connection_.raw(), requestor_, connection_.atom(XcbAtom::clipboard), target,
                          connection_.atom(XcbAtom::transfer), time_);
    connection_.flush();
}

void SelectionReader::handleSelectionNotify(const xcb_selection_notify_event_t &event)
{
    if (!isPending_ || event.target != target_)
        return;
    isPending_ = false;
    deadline_.noteProgress();
    if (event.property == connection_.atom(XcbAtom::transfer))
        fetch();
    else
        use({}); // Refused.
}

void SelectionReader::handlePropertyNotify(const xcb_property_notify_event_t &event)
{
    if (isIncremental_ && event.state == XCB_PROPERTY_NEW_VALUE &&
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
    connection_.readProperty(requestor_, connection_.atom(XcbAtom::transfer), true,
                             static_cast<std::uint32_t>(received_ / 4), wordsAtOnce,
                             steps_.guarded([this](const auto *reply) { receive(reply); }));
}

void SelectionReader::receive(const xcb_get_property_reply_t *reply)
{
    deadline_.noteProgress();
    if (reply == nullptr)
        return finish(std::nullopt);
    if (reply->type == XCB_NONE) // Named, but not there; or the notice of a chunk that was read before.
        return isIncremental_ ? void() : use({});
    if (!isIncremental_ && reply->type == connection_.atom(XcbAtom::incr))
        return beginIncremental(*reply);

    const auto *bytes = static_cast<const char *>(xcb_get_property_value(reply));
    const auto size = static_cast<std::size_t>(xcb_get_property_value_length(reply));
    const bool isAsBefore = answer_.type == XCB_NONE || answer_.type == reply->type;
    if (!isAsBefore || answer_.bytes.size() + size + reply->bytes_after > mostBytes_)
        return finish(std::nullopt);
    answer_.type = reply->type;
    answer_.format = reply->format;
    const bool isEndMarker = isIncremental_ && received_ == 0 && size == 0;
    if (isEndMarker)
        return use(std::exchange(answer_, {}));
    answer_.bytes.append(bytes, size);
    received_ += size;
    if (reply->bytes_after > 0)
        return size > 0 ? fetchRest() : finish(std::nullopt);
    if (!isIncremental_)
        use(std::exchange(answer_, {}));
}

// INCR: the owner begins to send when its size property is deleted, which reading it has done.
void SelectionReader::beginIncremental(const xcb_get_property_reply_t &reply)
{
    std::uint32_t announcedSize = 0; // At least this many bytes will come.
    if (reply.format == 32 && reply.value_len > 0)
        std::memcpy(&announcedSize, xcb_get_property_value(&reply), sizeof announcedSize);
    if (announcedSize > mostBytes_ || reply.bytes_after > 0)
        return finish(std::nullopt);
    isIncremental_ = true;
    answer_ = {};
}

void SelectionReader::use(const Answer &answer)
{
    switch (step_) {
    case Step::targets:
        return useTargets(answer);
    case Step::hint: // A mark that cannot be read counts as well.
        if (answer.type == XCB_NONE || answer.format != 8 || PlainText::isSecret(answer.bytes))
            return finish(std::nullopt);
        return tryNextTarget();
    case Step::text:
        return useText(answer);
    }
}

void SelectionReader::useTargets(const Answer &answer)
{
    if (answer.type == XCB_NONE) { // An old program without a list; it cannot mark anything as secret either.
        targets_ = {XCB_ATOM_STRING, connection_.atom(XcbAtom::utf8String)};
        return tryNextTarget();
    }
    const bool isList = answer.type == XCB_ATOM_ATOM || answer.type == connection_.atom(XcbAtom::targets);
    if (!isList || answer.format != 32)
        return finish(std::nullopt);
    std::vector<xcb_atom_t> offered = atomsIn(answer.bytes);
    offered.resize(std::min(offered.size(), PlainText::mostTargets));
    connection_.askAtomNames(
        offered, steps_.guarded([this, offered](const auto &names) { chooseTargets(offered, names); }));
}

void SelectionReader::chooseTargets(const std::vector<xcb_atom_t> &offered,
                                    const std::vector<std::string> &names)
{
    deadline_.noteProgress();
    for (const std::string &name : PlainText::targetsAmong(names)) {
        const auto index = std::find(names.begin(), names.end(), name) - names.begin();
        targets_.insert(targets_.begin(), offered.at(static_cast<std::size_t>(index)));
    }
    const bool isMarked = std::find(names.begin(), names.end(), PlainText::secretMark) != names.end();
    if (!targets_.empty() && isMarked)
        return convert(Step::hint, connection_.atom(XcbAtom::passwordManagerHint));
    tryNextTarget();
}

// The type of what came says how it is encoded, whatever was asked for.
void SelectionReader::useText(const Answer &answer)
{
    if (answer.format != 8)
        return tryNextTarget();
    connection_.askAtomNames({answer.type}, steps_.guarded([this, bytes = answer.bytes](const auto &names) {
        if (auto text = PlainText::decoded(names.front(), bytes))
            finish(std::move(text));
        else
            tryNextTarget();
    }));
}

void SelectionReader::tryNextTarget()
{
    if (aim_ == Aim::permission)
        return finish(std::string());
    if (targets_.empty())
        return finish(std::nullopt);
    const xcb_atom_t target = targets_.back();
    targets_.pop_back();
    convert(Step::text, target);
}

void SelectionReader::finish(std::optional<std::string> text)
{
    // The last thing done here: the handler may destroy this object.
    if (const Done done = std::exchange(done_, nullptr))
        done(std::move(text));
}
