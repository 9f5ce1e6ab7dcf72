#pragma once

#include <VelmoraLinux/X11/XcbConnection.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Scheduler.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

// Answers the programs that ask for the text which we put on the clipboard.
//
// A long text is sent by INCR, a chunk whenever the requestor has deleted the one before; a requestor that
// stops is given up after some time. Of one program not many such transfers are served at once, and one request
// gets not many bytes at once: the rest is refused. A transfer under way is not harmed when the text is replaced or
// withdrawn.
class SelectionServer {
public:
    SelectionServer(XcbConnection &connection, Scheduler &scheduler);

    // Offers `text`; without one the clipboard is ours but empty.
    void offer(std::optional<std::string> text);

    // `time` is when the server gave us the selection; older requests are meant for the owner before.
    void setOwnedSince(xcb_timestamp_t time);

    // The clipboard is no longer ours.
    void withdraw();

    [[nodiscard]] const std::string *text() const { return text_.get(); }

    // The text targets on offer, for a clipboard manager to keep.
    [[nodiscard]] std::vector<xcb_atom_t> targets() const;

    void handleRequest(const xcb_selection_request_event_t &request);
    void handlePropertyNotify(const xcb_property_notify_event_t &event);
    void handleDestroyNotify(const xcb_destroy_notify_event_t &event);

private:
    using Text = std::shared_ptr<const std::string>;

    // An INCR transfer.
    struct Transfer {
        xcb_window_t requestor;
        xcb_atom_t property;
        xcb_atom_t type;
        Text text;
        std::size_t sent = 0;
        std::chrono::nanoseconds lastProgress{};
    };

    [[nodiscard]] bool isForUs(const xcb_selection_request_event_t &request) const;
    bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
    [[nodiscard]] Text textFor(xcb_atom_t target) const;
    bool sendText(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, Text text);
    [[nodiscard]] bool mayTransfer(xcb_window_t requestor) const;
    void sendNextChunk(Transfer &transfer);
    void answerMultiple(const xcb_selection_request_event_t &request, const xcb_get_property_reply_t *list);
    void notify(const xcb_selection_request_event_t &request, xcb_atom_t property);
    void write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string_view bytes);
    void write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
               const std::vector<std::uint32_t> &words);
    void watchTransfers();
    template<typename Which>
    void endTransfers(Which which);

    XcbConnection &connection_;
    Scheduler &scheduler_;
    bool isOwner_ = false;
    xcb_timestamp_t ownedSince_ = XCB_CURRENT_TIME;
    std::chrono::nanoseconds ownedAt_{}; // The same moment on our own clock.
    Text text_;                          // Null: nothing is offered.
    Text latin1_;                        // The same for old programs; null when the text has other letters.
    std::vector<Transfer> transfers_;
    std::size_t sentAtOnce_ = 0; // Bytes of text for the present request.
    bool isWatching_ = false;
    DelayedSteps steps_;
};
