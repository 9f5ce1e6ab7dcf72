#pragma once

#include "XcbServer.h"

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

// A connection of our own to the X server, beside the one Qt keeps.
//
// Events reach every handler on the main thread. A server that goes away leaves a connection that does
// nothing.
class X11Display : public QObject {
    Q_OBJECT

public:
    using EventHandler = std::function<void(const xcb_generic_event_t &event)>;

    // Nothing when there is no X server.
    static std::unique_ptr<X11Display> open();

    [[nodiscard]] xcb_connection_t *xcb() const { return connection_.get(); }

    [[nodiscard]] const xcb_screen_t &screen() const { return *screen_; }

    [[nodiscard]] int screenNumber() const { return screenNumber_; }

    [[nodiscard]] xcb_window_t root() const { return screen_->root; }

    [[nodiscard]] xcb_atom_t atom(const char *name) const;
    [[nodiscard]] xcb_window_t selectionOwner(xcb_atom_t selection) const;
    // The first `length` words of a property; empty when it is missing.
    [[nodiscard]] std::vector<quint32> property(xcb_window_t window, xcb_atom_t name, quint32 length) const;
    // The same of several windows; takes as long as for one.
    [[nodiscard]] std::vector<std::vector<quint32>> propertyOf(const std::vector<xcb_window_t> &windows,
                                                               xcb_atom_t name, quint32 length) const;
    void sendClientMessage(xcb_window_t destination, quint32 eventMask,
                           const xcb_client_message_event_t &message);
    // Adds to the events we want of a window that may be another client's.
    void listenTo(xcb_window_t window, quint32 eventMask) const;

    void addEventHandler(EventHandler handler) { handlers_.push_back(std::move(handler)); }

    // `handler` runs once when the server has gone away.
    void setLostHandler(std::function<void()> handler) { lost_ = std::move(handler); }

    // Sends what was asked for and looks for events that came in the meantime.
    void flush();

private:
    X11Display(XcbServer connection, int screenNumber);
    void dispatch();

    XcbServer connection_;
    int screenNumber_;
    const xcb_screen_t *screen_;
    std::vector<EventHandler> handlers_;
    std::function<void()> lost_;
};
