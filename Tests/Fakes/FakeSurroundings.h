#pragma once

#include <VelmoraPlatform/Appearance.h>
#include <VelmoraPlatform/WindowManager.h>

// A window manager that does nothing but count panels.
class PlainWindowManager final : public WindowManager {
public:
    void makePanel(QWindow &, const PanelTraits &) override { ++panels; }

    void giveKeyboard(QWindow &) override {}

    void returnKeyboard(QWindow &) override {}

    void place(QWindow &, const QRect &) override {}

    [[nodiscard]] bool blendsWindows() const override { return true; }

    void setBlendingHandler(std::function<void()>) override {}

    void activate(QWindow &) override {}

    int panels = 0;
};

// A light desktop.
class PlainAppearance final : public Appearance {
public:
    [[nodiscard]] ColorScheme colorScheme() const override { return ColorScheme::light; }

    [[nodiscard]] bool reducesMotion() const override { return reduced; }

    [[nodiscard]] bool increasesContrast() const override { return false; }

    void addChangeHandler(ChangeHandler) override {}

    bool reduced = false;
};
