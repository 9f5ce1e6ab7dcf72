#pragma once

#include "FrameAnimation.h"
#include "QuickViews.h"

#include <VelmoraMac/Shell/Panel.h>

// A panel that is a window whose content is a Qt Quick view.
class QuickPanel : public QObject, public Panel {
    Q_OBJECT

public:
    QuickPanel(QuickWindow window, const PanelOptions &options, WindowManager &windows,
               const Appearance &appearance);

    [[nodiscard]] QRect frame() const override { return frame_.frame(); }

    void setFrame(const QRect &frame, FrameChange change) override { frame_.change(frame, change); }

    [[nodiscard]] bool isVisible() const override { return window_->isVisible(); }

    void orderFront() override;
    void orderOut() override;
    void takeKeyboard() override;

    [[nodiscard]] quintptr windowId() const override { return window_->winId(); }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Keyboard { none, wanted, taken };

    void followSurroundings();
    void giveKeyboardWhenExposed();
    void cancel();

    QuickWindow window_;
    std::function<void()> cancelled_;
    WindowManager &windows_;
    FrameAnimation frame_;
    Keyboard keyboard_ = Keyboard::none;
};
