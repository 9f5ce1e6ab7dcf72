#pragma once

#include "X11Display.h"

#include <VelmoraPlatform/PointerMonitor.h>

// Listens to the raw button events of the X input extension: no grab, so every click reaches its target.
class X11PointerMonitor : public PointerMonitor {
public:
    // `connection` may be null: there are no presses to see then.
    explicit X11PointerMonitor(X11Display *connection);

    void start(Handler handler) override;
    void stop() override;

private:
    void select(bool listening);
    void handle(const xcb_generic_event_t &event);
    [[nodiscard]] Press pressUnderPointer() const;

    X11Display *connection_;
    quint8 extensionOpcode_ = 0;
    Handler handler_;
};
