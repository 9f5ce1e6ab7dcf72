#pragma once

#include <functional>

// How the user wants the desktop to look and move.
class Appearance {
public:
    enum class ColorScheme { light, dark };
    using ChangeHandler = std::function<void()>;

    virtual ~Appearance() = default;
    [[nodiscard]] virtual ColorScheme colorScheme() const = 0;
    // Springs and repeating motion should become short fades.
    [[nodiscard]] virtual bool reducesMotion() const = 0;
    // `handler` runs on the main thread after either has changed. Handlers stay for the life of this object.
    virtual void addChangeHandler(ChangeHandler handler) = 0;
};
