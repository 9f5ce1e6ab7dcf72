#include "SeatInput.h"

#include "LayerShell.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cursor-shape-client-header.h>
#include <linux/input-event-codes.h>
#include <utility>
#include <wayland-client-protocol.h>

namespace {

constexpr std::uint32_t seatVersion = 5; // Groups the pointer's events and tells clicks of the wheel.
constexpr int anglePerClick = 120;       // As Qt counts.
constexpr double anglePerPoint = 12;

Qt::MouseButton buttonOf(std::uint32_t code)
{
    switch (code) {
    case BTN_LEFT:
        return Qt::LeftButton;
    case BTN_RIGHT:
        return Qt::RightButton;
    case BTN_MIDDLE:
        return Qt::MiddleButton;
    default:
        return Qt::NoButton;
    }
}

QPointF pointOf(wl_fixed_t x, wl_fixed_t y)
{
    return {wl_fixed_to_double(x), wl_fixed_to_double(y)};
}

} // namespace

struct SeatInput::Listeners {
    static SeatInput &self(void *data) { return *static_cast<SeatInput *>(data); }

    static constexpr wl_seat_listener seat = {.capabilities =
                                                  [](void *data, wl_seat *, std::uint32_t capabilities) {
                                                      self(data).capabilities_ = capabilities;
                                                      self(data).useDevices();
                                                  },
                                              .name = [](void *, wl_seat *, const char *) {}};

    // What later versions of the interface than the one in use have is not called, and not everywhere known.
    static constexpr wl_pointer_listener pointer = [] {
        wl_pointer_listener calls{};
        calls.enter = [](void *data, wl_pointer *, std::uint32_t serial, wl_surface *surface, wl_fixed_t x,
                         wl_fixed_t y) {
            self(data).showCursor(serial);
            self(data).enterPointer(surface, pointOf(x, y));
        };
        calls.leave = [](void *data, wl_pointer *, std::uint32_t, wl_surface *) {
            self(data).leavePointer();
        };
        calls.motion = [](void *data, wl_pointer *, std::uint32_t, wl_fixed_t x, wl_fixed_t y) {
            self(data).move(pointOf(x, y));
        };
        calls.button = [](void *data, wl_pointer *, std::uint32_t, std::uint32_t, std::uint32_t code,
                          std::uint32_t state) {
            if (const Qt::MouseButton button = buttonOf(code); button != Qt::NoButton)
                self(data).press(button, state == WL_POINTER_BUTTON_STATE_PRESSED);
        };
        calls.axis = [](void *data, wl_pointer *, std::uint32_t, std::uint32_t axis, wl_fixed_t value) {
            const double distance = wl_fixed_to_double(value);
            const bool isVertical = axis == WL_POINTER_AXIS_VERTICAL_SCROLL;
            self(data).scrolled_ -= isVertical ? QPointF(0, distance) : QPointF(distance, 0);
        };
        calls.frame = [](void *data, wl_pointer *) {
            SeatInput &input = self(data);
            const QPointF distance = std::exchange(input.scrolled_, {});
            const QPoint clicks = std::exchange(input.clicks_, {});
            if (!distance.isNull() || !clicks.isNull())
                input.scroll(distance, clicks);
        };
        calls.axis_source = [](void *, wl_pointer *, std::uint32_t) {};
        calls.axis_stop = [](void *, wl_pointer *, std::uint32_t, std::uint32_t) {};
        calls.axis_discrete = [](void *data, wl_pointer *, std::uint32_t axis, std::int32_t clicks) {
            const bool isVertical = axis == WL_POINTER_AXIS_VERTICAL_SCROLL;
            self(data).clicks_ -= isVertical ? QPoint(0, clicks) : QPoint(clicks, 0);
        };
        calls.axis_value120 = [](void *, wl_pointer *, std::uint32_t, std::int32_t) {};
        return calls;
    }();

    static constexpr wl_keyboard_listener keyboard = {
        .keymap = [](void *data, wl_keyboard *, std::uint32_t, std::int32_t file,
                     std::uint32_t size) { self(data).layout_.load(FileDescriptor(file), size); },
        .enter = [](void *data, wl_keyboard *, std::uint32_t, wl_surface *surface,
                    wl_array *) { self(data).turnKeyboard(surface, true); },
        .leave = [](void *data, wl_keyboard *, std::uint32_t,
                    wl_surface *surface) { self(data).turnKeyboard(surface, false); },
        .key = [](void *data, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t code,
                  std::uint32_t state) { self(data).pressKey(code, state == WL_KEYBOARD_KEY_STATE_PRESSED); },
        .modifiers =
            [](void *data, wl_keyboard *, std::uint32_t, std::uint32_t pressed, std::uint32_t latched,
               std::uint32_t locked,
               std::uint32_t group) { self(data).layout_.setModifiers(pressed, latched, locked, group); },
        .repeat_info =
            [](void *data, wl_keyboard *, std::int32_t timesPerSecond, std::int32_t delay) {
                self(data).repeat_.setPace(timesPerSecond, std::chrono::milliseconds(delay));
            }};

    static constexpr wl_touch_listener touch = {
        .down =
            [](void *data, wl_touch *, std::uint32_t, std::uint32_t, wl_surface *surface, std::int32_t finger,
               wl_fixed_t x, wl_fixed_t y) {
                SeatInput &input = self(data);
                if (input.finger_ >= 0)
                    return;
                input.finger_ = finger;
                input.enterPointer(surface, pointOf(x, y));
                input.press(Qt::LeftButton, true);
            },
        .up =
            [](void *data, wl_touch *, std::uint32_t, std::uint32_t, std::int32_t finger) {
                SeatInput &input = self(data);
                if (finger != input.finger_)
                    return;
                input.finger_ = -1;
                input.press(Qt::LeftButton, false);
                input.leavePointer();
            },
        .motion =
            [](void *data, wl_touch *, std::uint32_t, std::int32_t finger, wl_fixed_t x, wl_fixed_t y) {
                if (finger == self(data).finger_)
                    self(data).move(pointOf(x, y));
            },
        .frame = [](void *, wl_touch *) {},
        .cancel =
            [](void *data, wl_touch *) {
                self(data).finger_ = -1;
                self(data).leavePointer();
            },
        .shape = [](void *, wl_touch *, std::int32_t, wl_fixed_t, wl_fixed_t) {},
        .orientation = [](void *, wl_touch *, std::int32_t, wl_fixed_t) {}};
};

SeatInput::SeatInput()
    : repeat_([this](std::uint32_t code) { tellKey(QEvent::KeyPress, code, true); })
{
}

SeatInput::~SeatInput()
{
    disconnect();
}

void SeatInput::addSeat(const LayerShell &shell, std::uint32_t name, std::uint32_t version)
{
    if (seat_ != nullptr || version < seatVersion)
        return;
    shell_ = &shell;
    name_ = name;
    void *proxy = wl_registry_bind(shell.registry(), name, &wl_seat_interface, seatVersion);
    seat_ = static_cast<wl_seat *>(proxy);
    wl_seat_add_listener(seat_, &Listeners::seat, this);
}

void SeatInput::removeSeat(std::uint32_t name)
{
    if (seat_ != nullptr && name == name_)
        disconnect();
}

void SeatInput::disconnect()
{
    capabilities_ = 0;
    useDevices();
    if (seat_ != nullptr)
        wl_seat_release(std::exchange(seat_, nullptr));
}

bool SeatInput::hasPointer() const
{
    return (capabilities_ & WL_SEAT_CAPABILITY_POINTER) != 0;
}

void SeatInput::useDevices()
{
    const std::uint32_t capabilities = listeners_.empty() ? 0 : capabilities_;
    if ((capabilities & WL_SEAT_CAPABILITY_POINTER) == 0)
        releasePointer();
    else if (pointer_ == nullptr)
        usePointer();
    if ((capabilities & WL_SEAT_CAPABILITY_KEYBOARD) == 0)
        releaseKeyboard();
    else if (keyboard_ == nullptr)
        useKeyboard();
    if ((capabilities & WL_SEAT_CAPABILITY_TOUCH) == 0)
        releaseTouch();
    else if (touch_ == nullptr)
        useTouch();
}

void SeatInput::usePointer()
{
    pointer_ = wl_seat_get_pointer(seat_);
    wl_pointer_add_listener(pointer_, &Listeners::pointer, this);
    if (shell_->cursorShapes() != nullptr)
        cursor_ = wp_cursor_shape_manager_v1_get_pointer(shell_->cursorShapes(), pointer_);
}

void SeatInput::releasePointer()
{
    if (cursor_ != nullptr)
        wp_cursor_shape_device_v1_destroy(std::exchange(cursor_, nullptr));
    if (pointer_ != nullptr)
        wl_pointer_release(std::exchange(pointer_, nullptr));
    underPointer_ = nullptr;
    buttons_ = {};
}

void SeatInput::useKeyboard()
{
    keyboard_ = wl_seat_get_keyboard(seat_);
    wl_keyboard_add_listener(keyboard_, &Listeners::keyboard, this);
}

void SeatInput::releaseKeyboard()
{
    if (keyboard_ != nullptr)
        wl_keyboard_release(std::exchange(keyboard_, nullptr));
    withKeyboard_ = nullptr;
    repeat_.stop();
}

void SeatInput::useTouch()
{
    touch_ = wl_seat_get_touch(seat_);
    wl_touch_add_listener(touch_, &Listeners::touch, this);
}

void SeatInput::releaseTouch()
{
    if (touch_ != nullptr)
        wl_touch_release(std::exchange(touch_, nullptr));
    finger_ = -1;
}

void SeatInput::listen(wl_surface *surface, Listener listener)
{
    listeners_[surface] = std::move(listener);
    useDevices();
}

void SeatInput::ignore(wl_surface *surface)
{
    listeners_.erase(surface);
    if (surface == underPointer_)
        underPointer_ = nullptr;
    if (surface == withKeyboard_) {
        withKeyboard_ = nullptr;
        repeat_.stop();
    }
    useDevices();
}

void SeatInput::tell(wl_surface *surface, QEvent &event)
{
    const auto place = listeners_.find(surface);
    if (place == listeners_.end())
        return;
    const Listener listener = place->second; // It may stop listening meanwhile.
    listener(event);
}

// Without the protocol the pointer keeps the shape that it had elsewhere.
void SeatInput::showCursor(std::uint32_t serial)
{
    if (cursor_ != nullptr)
        wp_cursor_shape_device_v1_set_shape(cursor_, serial, WP_CURSOR_SHAPE_DEVICE_V1_SHAPE_DEFAULT);
}

void SeatInput::enterPointer(wl_surface *surface, QPointF place)
{
    underPointer_ = surface;
    buttons_ = {};
    move(place);
}

void SeatInput::leavePointer()
{
    QEvent event(QEvent::Leave);
    buttons_ = {};
    tell(std::exchange(underPointer_, nullptr), event);
}

void SeatInput::move(QPointF place)
{
    place_ = place;
    QMouseEvent event(QEvent::MouseMove, place, place, Qt::NoButton, buttons_, layout_.modifiers());
    tell(underPointer_, event);
}

void SeatInput::press(Qt::MouseButton button, bool isDown)
{
    buttons_.setFlag(button, isDown);
    const QEvent::Type type = isDown ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease;
    QMouseEvent event(type, place_, place_, button, buttons_, layout_.modifiers());
    tell(underPointer_, event);
}

void SeatInput::scroll(QPointF distance, QPoint clicks)
{
    const QPoint angle = clicks.isNull() ? (distance * anglePerPoint).toPoint() : clicks * anglePerClick;
    const QPoint pixels = clicks.isNull() ? distance.toPoint() : QPoint();
    QWheelEvent event(place_, place_, pixels, angle, buttons_, layout_.modifiers(), Qt::NoScrollPhase, false);
    tell(underPointer_, event);
}

void SeatInput::pressKey(std::uint32_t code, bool isDown)
{
    if (!isDown)
        repeat_.release(code);
    else if (layout_.repeats(code))
        repeat_.press(code);
    tellKey(isDown ? QEvent::KeyPress : QEvent::KeyRelease, code, false);
}

void SeatInput::tellKey(QEvent::Type type, std::uint32_t code, bool isRepeated)
{
    QKeyEvent event(type, layout_.key(code), layout_.modifiers(), layout_.text(code), isRepeated);
    tell(withKeyboard_, event);
}

void SeatInput::turnKeyboard(wl_surface *surface, bool isTo)
{
    withKeyboard_ = isTo ? surface : nullptr;
    repeat_.stop();
    QFocusEvent event(isTo ? QEvent::FocusIn : QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    tell(surface, event);
}
