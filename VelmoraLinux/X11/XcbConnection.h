#pragma once

#include "XcbServer.h"

#include <QByteArray>
#include <QSocketNotifier>
#include <QTimer>

#include <array>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

// The names that selections are made of. The order is that of the texts in XcbConnection.cpp.
enum class XcbAtom {
    clipboard,
    clipboardManager,
    targets,
    timestamp,
    multiple,
    saveTargets,
    atomPair,
    incr,
    null,
    utf8String,
    plainTextUtf8,
    plainText,
    text,
    passwordManagerHint,
    transfer,
    serverTime,
    count_
};

// A connection to the X server of our own, beside the one of the toolkit: what hangs in one does not hang the
// other.
//
// Events and replies are delivered from the event loop, not many in one turn: a flood of them makes nothing else
// wait. Once it is open nothing here waits for a reply. When the server goes away, every pending reply
// becomes null and then the handler of `setLostHandler` runs; later calls do nothing.
class XcbConnection {
public:
    using EventHandler = std::function<void(const xcb_generic_event_t &event)>;
    using PropertyHandler = std::function<void(const xcb_get_property_reply_t *reply)>;
    using OwnerHandler = std::function<void(xcb_window_t owner)>;
    using NamesHandler = std::function<void(const std::vector<std::string> &names)>;

    // Nothing when there is no such server or it lacks XFixes. An empty name stands for $DISPLAY.
    [[nodiscard]] static std::unique_ptr<XcbConnection> open(const QByteArray &displayName);
    ~XcbConnection();
    Q_DISABLE_COPY_MOVE(XcbConnection)

    [[nodiscard]] xcb_connection_t *raw() const { return connection_.get(); }

    [[nodiscard]] xcb_atom_t atom(XcbAtom name) const { return atoms_.at(static_cast<std::size_t>(name)); }

    // Number of the first XFixes event.
    [[nodiscard]] std::uint8_t firstXfixesEvent() const { return firstXfixesEvent_; }

    [[nodiscard]] bool isLost() const { return isLost_; }

    // Bytes of property data that surely fit into one request.
    [[nodiscard]] std::size_t largestChunk() const { return largestChunk_; }

    // An invisible window that reports changes of its properties.
    [[nodiscard]] xcb_window_t makeWindow() const;
    void destroyWindow(xcb_window_t window);

    // Asks for `words` 32-bit words of a property from word `offset` on; `remove` takes it away if that was
    // the rest of it. The handler gets null when there is no such window any more.
    void readProperty(xcb_window_t window, xcb_atom_t property, bool remove, std::uint32_t offset,
                      std::uint32_t words, PropertyHandler handler);
    void askSelectionOwner(xcb_atom_t selection, OwnerHandler handler);
    // Asks for the names of atoms; that of one which does not exist is empty.
    void askAtomNames(const std::vector<xcb_atom_t> &atoms, NamesHandler handler);
    void flush();

    void setEventHandler(EventHandler handler) { eventHandler_ = std::move(handler); }

    void setLostHandler(std::function<void()> handler) { lostHandler_ = std::move(handler); }

    // Runs `step` from the event loop, unless this connection is gone by then.
    void later(std::function<void()> step);
    // Delivers what has arrived; waits for it for up to `limit` if there is nothing yet.
    void wait(std::chrono::milliseconds limit);

private:
    struct PendingReply {
        unsigned sequence;
        std::function<void(void *reply)> handler;
    };

    [[nodiscard]] std::vector<std::string> namesOf(const std::vector<xcb_atom_t> &atoms) const;
    explicit XcbConnection(XcbServer connection);
    bool prepare();
    bool deliver();
    void deliverLater();
    bool deliverEvent();
    bool deliverReply();
    void lose();

    XcbServer connection_;
    std::array<xcb_atom_t, static_cast<std::size_t>(XcbAtom::count_)> atoms_ = {};
    xcb_window_t root_ = XCB_NONE;
    std::uint8_t firstXfixesEvent_ = 0;
    std::size_t largestChunk_ = 0;
    std::deque<PendingReply> pendingReplies_; // In the order of asking, which is that of the answers.
    std::unordered_map<xcb_atom_t, std::string> atomNames_; // Those that were asked for.
    EventHandler eventHandler_;
    std::function<void()> lostHandler_;
    bool isLost_ = false;
    bool isDeliveryPlanned_ = false;
    std::vector<std::function<void()>> steps_; // For the next turn of the event loop.
    QTimer stepTimer_;
    std::unique_ptr<QSocketNotifier> notifier_;
};
