#pragma once

#include <functional>

// The desktop's settings for colours and motion.
class Appearance {
public:
    enum class ColorScheme { light, dark };
    using ChangeHandler = std::function<void()>;

    virtual ~Appearance() = default;
    [[nodiscard]] virtual ColorScheme colorScheme() const = 0;
    // Whether springs and repeating motion are to be replaced by short fades.
    [[nodiscard]] virtual bool reducesMotion() const = 0;
    // Whether texts and outlines are to stand out more than usual.
    [[nodiscard]] virtual bool increasesContrast() const = 0;
    // `handler` runs on the main thread after any of them has changed. Handlers stay for the life of this object.
    virtual void addChangeHandler(ChangeHandler handler) = 0;
};
