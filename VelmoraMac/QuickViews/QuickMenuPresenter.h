#pragma once

#include "QuickViews.h"

#include <VelmoraMac/Shell/MenuPresenter.h>
#include <VelmoraMac/Shell/StatusMenuModel.h>

#include <memory>

// A menu drawn by the application. As a window it grabs mouse and keyboard while it is open, as menus do; as a panel of
// the desktop's shell it has the keyboard. A click elsewhere closes it.
class QuickMenuPresenter : public QObject, public MenuPresenter {
    Q_OBJECT

public:
    explicit QuickMenuPresenter(QuickViews &views);

    void popUp(const StatusMenu &menu, const QRect &anchor, int minimumWidth) override;
    void dismiss() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] QRect frameFor(const QQuickItem *view, const QRect &anchor) const;
    void showWindow(const View &view, const QRect &anchor);
    void showSurface(const View &view, const QRect &anchor, PanelSurfaces &surfaces);
    void handleInput(QEvent &event);
    void grabInput();
    bool pressKey(const QKeyEvent &event);

    QuickViews &views_;
    std::unique_ptr<StatusMenuModel> model_;
    QuickWindow window_; // One of them while the menu is open.
    OffscreenPicture picture_;
    std::unique_ptr<PanelSurface> surface_; // What the picture is shown by.
};
