#pragma once

#include "KeyRepeat.h"
#include "KeyboardLayout.h"

#include <QEvent>
#include <QPointF>
#include <QtGlobal>

#include <cstdint>
#include <functional>
#include <map>

class LayerShell;
struct wl_keyboard;
struct wl_pointer;
struct wl_seat;
struct wl_surface;
struct wl_touch;
struct wp_cursor_shape_device_v1;

// Mouse, keyboard and touch screen of the compositor's first seat, as events for the surfaces that listen; while none
// does, the devices are left alone. The first finger on a touch screen is a mouse.
class SeatInput {
public:
    // May make any surface stop listening.
    using Listener = std::function<void(QEvent &event)>;

    SeatInput();
    ~SeatInput();
    Q_DISABLE_COPY_MOVE(SeatInput)

    void addSeat(const LayerShell &shell, std::uint32_t name, std::uint32_t version);
    void removeSeat(std::uint32_t name);
    // Before the connection ends.
    void disconnect();

    // Before the surface is shown, so that nothing is missed.
    void listen(wl_surface *surface, Listener listener);
    void ignore(wl_surface *surface);

    [[nodiscard]] bool hasPointer() const;

    // Ours that the mouse is on, listening or not; null elsewhere.
    [[nodiscard]] const wl_surface *underPointer() const { return underPointer_; }

private:
    void useDevices();
    void usePointer();
    void releasePointer();
    void useKeyboard();
    void releaseKeyboard();
    void useTouch();
    void releaseTouch();

    void tell(wl_surface *surface, QEvent &event);
    void showCursor(std::uint32_t serial);
    void enterPointer(wl_surface *surface, QPointF place);
    void leavePointer();
    void move(QPointF place);
    void press(Qt::MouseButton button, bool isDown);
    void scroll(QPointF distance, QPoint clicks);
    void pressKey(std::uint32_t code, bool isDown);
    void tellKey(QEvent::Type type, std::uint32_t code, bool isRepeated);
    void turnKeyboard(wl_surface *surface, bool isTo);

    struct Listeners; // What the protocol calls.

    const LayerShell *shell_ = nullptr;
    std::uint32_t name_ = 0;
    wl_seat *seat_ = nullptr;
    std::uint32_t capabilities_ = 0; // WL_SEAT_CAPABILITY_...
    wl_pointer *pointer_ = nullptr;
    wp_cursor_shape_device_v1 *cursor_ = nullptr;
    wl_keyboard *keyboard_ = nullptr;
    wl_touch *touch_ = nullptr;
    KeyboardLayout layout_;
    KeyRepeat repeat_;
    std::map<wl_surface *, Listener> listeners_;
    wl_surface *underPointer_ = nullptr;
    wl_surface *withKeyboard_ = nullptr;
    QPointF place_; // Of the pointer, on its surface.
    Qt::MouseButtons buttons_;
    QPointF scrolled_; // Since the last frame of the pointer.
    QPoint clicks_;    // The same in clicks of the wheel.
    std::int32_t finger_ = -1;
};
