#pragma once

#include <VelmoraMac/Shell/MenuPresenter.h>
#include <VelmoraPlatform/PointerMonitor.h>
#include <VelmoraPlatform/Screens.h>

// One screen whose top panel takes 28 points.
class FakeScreens final : public Screens {
public:
    [[nodiscard]] QRect mainWorkArea() const override { return workArea; }

    [[nodiscard]] QRect workAreaAt(QPoint) const override { return workArea; }

    QRect workArea{0, 28, 1280, 772};
};

// A mouse whose buttons the test presses.
class FakePointerMonitor final : public PointerMonitor {
public:
    void start(Handler handler) override { handler_ = std::move(handler); }

    void stop() override { handler_ = nullptr; }

    [[nodiscard]] bool isListening() const { return handler_ != nullptr; }

    void press(const Press &press)
    {
        const Handler handler = handler_;
        if (handler)
            handler(press);
    }

private:
    Handler handler_;
};

// Keeps the menus it was asked to show.
class FakeMenuPresenter final : public MenuPresenter {
public:
    void popUp(const StatusMenu &menu, const QRect &newAnchor, int newMinimumWidth) override
    {
        menus.push_back(menu);
        anchor = newAnchor;
        minimumWidth = newMinimumWidth;
    }

    void dismiss() override {}

    std::vector<StatusMenu> menus;
    QRect anchor;
    int minimumWidth = 0;
};
