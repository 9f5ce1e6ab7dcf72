// selection-owner: owns the clipboard, well-behaved or not, as commanded on standard input.
//
//   MODE N\n and N bytes    takes the clipboard with these bytes and answers requests as MODE says
//   release\n               gives the clipboard up
//
// Prints on standard output, with the steady clock in nanoseconds:
//   owned NS                the X server has confirmed the ownership
//   lost NS                 another program has taken the clipboard
//   asked TARGET            another program has requested this target
//
// Modes:
//   text             any length; long texts are sent incrementally (ICCCM, INCR)
//   pieces           incrementally in pieces of 1000 bytes, short texts too
//   old              refuses TARGETS
//   latin1           STRING only
//   as:TARGET        this target only
//   image            no target for text
//   secret           marked as a password (x-kde-passwordManagerHint)
//   mark-unreadable  marked, but the mark is refused
//   mark-empty       marked, but the mark has no content
//   mark-public      marked as "public"
//   filled           instead of bytes: N times the letter x
//   silent           never answers
//   wrong-type, wrong-format, unwritten, garbage-targets    answers that make no sense
//   empty-targets    a list without a target
//   dies             ends when it is asked for the text
//   pieces-die, pieces-stall, pieces-endless                after the first piece
//   pieces-lie       announces 100 MiB
#include <VelmoraLinux/X11/XcbServer.h>

#include <poll.h>
#include <unistd.h>
#include <xcb/xfixes.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t largestWhole = 200000;
constexpr std::size_t smallPiece = 1000;

class SelectionOwner {
public:
    SelectionOwner();
    int run();

private:
    bool readInput();
    bool takeCommand();
    void copy(std::string mode, std::string text);
    void handle(const xcb_generic_event_t &event);
    void answer(const xcb_selection_request_event_t &request);
    bool convert(const xcb_selection_request_event_t &request);
    bool convertText(const xcb_selection_request_event_t &request);
    void beginPieces(const xcb_selection_request_event_t &request);
    void sendPiece();
    std::vector<xcb_atom_t> targets();
    void write(const xcb_selection_request_event_t &request, xcb_atom_t type, std::uint8_t format,
               std::string_view bytes);
    xcb_atom_t atom(const std::string &name);
    std::string nameOf(xcb_atom_t atom);

    xcb_connection_t *x_;
    xcb_window_t window_ = 0;
    std::uint8_t firstXfixesEvent_ = 0;
    std::map<std::string, xcb_atom_t> atoms_;
    std::string input_;
    std::string mode_;
    std::string text_;
    xcb_selection_request_event_t pieces_ = {}; // The request that is answered in pieces.
    std::size_t sent_ = 0;
};

long long now()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void say(const std::string &line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

SelectionOwner::SelectionOwner()
    : x_(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(x_) != 0) {
        std::fputs("selection-owner: no display\n", stderr);
        std::exit(1);
    }
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(x_)).data;
    window_ = xcb_generate_id(x_);
    xcb_create_window(x_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    firstXfixesEvent_ = xcb_get_extension_data(x_, &xcb_xfixes_id)->first_event;
    xcb_discard_reply(x_, xcb_xfixes_query_version(x_, 1, 0).sequence);
    xcb_xfixes_select_selection_input(x_, window_, atom("CLIPBOARD"),
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    xcb_flush(x_);
}

int SelectionOwner::run()
{
    while (true) {
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(x_)})
            handle(*event);
        xcb_flush(x_);
        if (xcb_connection_has_error(x_) != 0)
            return 1;
        std::array<pollfd, 2> sources = {
            {{xcb_get_file_descriptor(x_), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
        poll(sources.data(), sources.size(), -1);
        if (sources[1].revents != 0 && !readInput())
            return 0;
    }
}

bool SelectionOwner::readInput()
{
    std::string buffer(1 << 16, '\0');
    const ssize_t size = read(STDIN_FILENO, buffer.data(), buffer.size());
    if (size <= 0)
        return false;
    input_.append(buffer, 0, static_cast<std::size_t>(size));
    while (takeCommand())
        continue;
    return true;
}

bool SelectionOwner::takeCommand()
{
    const std::size_t end = input_.find('\n');
    if (end == std::string::npos)
        return false;
    const std::string line = input_.substr(0, end);
    if (line == "release") {
        xcb_set_selection_owner(x_, XCB_NONE, atom("CLIPBOARD"), XCB_CURRENT_TIME);
        input_.erase(0, end + 1);
        return true;
    }
    const std::size_t blank = line.find(' ');
    if (blank == std::string::npos) {
        std::fputs("selection-owner: MODE N expected\n", stderr);
        std::exit(1);
    }
    const std::string mode = line.substr(0, blank);
    const auto size = static_cast<std::size_t>(std::stoull(line.substr(blank + 1)));
    const std::size_t taken = mode == "filled" ? 0 : size;
    if (input_.size() < end + 1 + taken)
        return false;
    copy(mode, mode == "filled" ? std::string(size, 'x') : input_.substr(end + 1, size));
    input_.erase(0, end + 1 + taken);
    return true;
}

void SelectionOwner::copy(std::string mode, std::string text)
{
    mode_ = std::move(mode);
    text_ = std::move(text);
    pieces_ = {};
    xcb_set_selection_owner(x_, window_, atom("CLIPBOARD"), XCB_CURRENT_TIME);
}

void SelectionOwner::handle(const xcb_generic_event_t &event)
{
    const unsigned type = event.response_type & 0x7FU;
    if (type == firstXfixesEvent_ + unsigned(XCB_XFIXES_SELECTION_NOTIFY)) {
        const auto &change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
        say((change.owner == window_ ? "owned " : "lost ") + std::to_string(now()));
    } else if (type == XCB_SELECTION_REQUEST) {
        answer(reinterpret_cast<const xcb_selection_request_event_t &>(event));
    } else if (type == XCB_PROPERTY_NOTIFY) {
        const auto &change = reinterpret_cast<const xcb_property_notify_event_t &>(event);
        if (change.state == XCB_PROPERTY_DELETE && change.window == pieces_.requestor)
            sendPiece();
    }
}

void SelectionOwner::answer(const xcb_selection_request_event_t &request)
{
    say("asked " + nameOf(request.target));
    if (mode_ == "silent")
        return;
    const bool isDone = convert(request);
    xcb_selection_notify_event_t notify = {};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = isDone ? request.property : xcb_atom_t(XCB_NONE);
    std::array<char, 32> event = {};
    std::memcpy(event.data(), &notify, sizeof notify);
    xcb_send_event(x_, 0, request.requestor, 0, event.data());
}

std::vector<xcb_atom_t> SelectionOwner::targets()
{
    std::vector<xcb_atom_t> list = {atom("TARGETS"), atom("TIMESTAMP")};
    if (mode_ == "image")
        list.push_back(atom("image/png"));
    else if (mode_ == "latin1")
        list.push_back(XCB_ATOM_STRING);
    else if (mode_.starts_with("as:"))
        list.push_back(atom(mode_.substr(3)));
    else
        list.push_back(atom("UTF8_STRING"));
    if (mode_ == "secret" || mode_.starts_with("mark-"))
        list.push_back(atom("x-kde-passwordManagerHint"));
    return list;
}

bool SelectionOwner::convert(const xcb_selection_request_event_t &request)
{
    if (request.target == atom("TARGETS")) {
        const std::vector<xcb_atom_t> list = targets();
        const std::string_view bytes(reinterpret_cast<const char *>(list.data()),
                                     list.size() * sizeof(xcb_atom_t));
        if (mode_ == "garbage-targets")
            write(request, XCB_ATOM_STRING, 8, "\xff\x01garbage");
        else if (mode_ != "old")
            write(request, XCB_ATOM_ATOM, 32, mode_ == "empty-targets" ? std::string_view() : bytes);
        return mode_ != "old";
    }
    if (request.target == atom("x-kde-passwordManagerHint") && mode_ != "mark-unreadable") {
        write(request, request.target, 8,
              mode_ == "secret"       ? "secret"
              : mode_ == "mark-empty" ? ""
                                      : "public");
        return mode_ == "secret" || mode_.starts_with("mark-");
    }
    std::string target = mode_ == "latin1" ? "STRING" : "UTF8_STRING";
    if (mode_.starts_with("as:"))
        target = mode_.substr(3);
    const bool isText = request.target == atom(target);
    return isText && mode_ != "image" && convertText(request);
}

bool SelectionOwner::convertText(const xcb_selection_request_event_t &request)
{
    if (mode_ == "dies")
        std::exit(0);
    if (mode_ == "unwritten")
        return true;
    if (mode_ == "wrong-type")
        write(request, XCB_ATOM_INTEGER, 8, text_);
    else if (mode_ == "wrong-format")
        write(request, request.target, 32, std::string(8, '\xff'));
    else if (mode_.starts_with("pieces") || text_.size() > largestWhole)
        beginPieces(request);
    else
        write(request, request.target, 8, text_);
    return true;
}

void SelectionOwner::beginPieces(const xcb_selection_request_event_t &request)
{
    pieces_ = request;
    sent_ = 0;
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(x_, request.requestor, XCB_CW_EVENT_MASK, &events);
    const auto size = mode_ == "pieces-lie" ? 100U << 20U : static_cast<std::uint32_t>(text_.size());
    write(request, atom("INCR"), 32, std::string_view(reinterpret_cast<const char *>(&size), sizeof size));
}

void SelectionOwner::sendPiece()
{
    if (sent_ > 0 && mode_ == "pieces-die")
        std::exit(0);
    if (sent_ > 0 && mode_ == "pieces-stall")
        return;
    if (mode_ == "pieces-endless")
        sent_ = 0;
    const std::size_t size = mode_.starts_with("pieces") ? smallPiece : largestWhole;
    const auto piece = std::string_view(text_).substr(sent_, size);
    write(pieces_, pieces_.target, 8, piece);
    sent_ += piece.size();
    if (piece.empty())
        pieces_ = {};
}

void SelectionOwner::write(const xcb_selection_request_event_t &request, xcb_atom_t type, std::uint8_t format,
                           std::string_view bytes)
{
    xcb_change_property(x_, XCB_PROP_MODE_REPLACE, request.requestor, request.property, type, format,
                        static_cast<std::uint32_t>(bytes.size() / (format / 8U)), bytes.data());
}

xcb_atom_t SelectionOwner::atom(const std::string &name)
{
    const auto [place, isNew] = atoms_.try_emplace(name, XCB_NONE);
    if (isNew) {
        const auto cookie = xcb_intern_atom(x_, 0, static_cast<std::uint16_t>(name.size()), name.data());
        place->second = XcbReply<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(x_, cookie, nullptr))->atom;
    }
    return place->second;
}

std::string SelectionOwner::nameOf(xcb_atom_t atom)
{
    const XcbReply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(x_, xcb_get_atom_name(x_, atom), nullptr));
    return reply ? std::string(xcb_get_atom_name_name(reply.get()),
                               static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())))
                 : "?";
}

} // namespace

int main()
{
    return SelectionOwner().run();
}
