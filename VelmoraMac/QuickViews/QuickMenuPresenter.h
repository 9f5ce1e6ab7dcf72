#pragma once

#include "QuickViews.h"

#include <VelmoraMac/Shell/MenuPresenter.h>
#include <VelmoraMac/Shell/StatusMenuModel.h>

#include <memory>

// A menu drawn by the application. While it is open it grabs mouse and keyboard, as menus do: a click
// elsewhere closes it.
class QuickMenuPresenter : public QObject, public MenuPresenter {
    Q_OBJECT

public:
    explicit QuickMenuPresenter(QuickViews &views);

    void popUp(const StatusMenu &menu, const QRect &anchor, int minimumWidth) override;
    void dismiss() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void grabInput();
    bool pressKey(const QKeyEvent &event);

    QuickViews &views_;
    std::unique_ptr<StatusMenuModel> model_;
    QuickWindow window_;
};
