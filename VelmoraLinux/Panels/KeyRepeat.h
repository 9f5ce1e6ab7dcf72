#pragma once

#include <QTimer>
#include <QtGlobal>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

// The key that is held down, again and again: a compositor tells its pace, and each program repeats for itself.
class KeyRepeat {
public:
    using Action = std::function<void(std::uint32_t code)>;

    explicit KeyRepeat(Action again);
    Q_DISABLE_COPY_MOVE(KeyRepeat)

    // At first nothing repeats, nor with no times a second.
    void setPace(int timesPerSecond, std::chrono::milliseconds delay);
    // The key pressed last is the one that repeats.
    void press(std::uint32_t code);
    void release(std::uint32_t code);
    void stop();

private:
    void repeat();

    Action again_;
    QTimer timer_;
    std::optional<std::uint32_t> held_;
    int timesPerSecond_ = 0;
    std::chrono::milliseconds delay_{};
};
