#include "QuickMenuPresenter.h"

#include <VelmoraMac/Shell/PopoverPlacement.h>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>

using namespace Qt::StringLiterals;

namespace {
constexpr int cornerRadius = 8;
}

QuickMenuPresenter::QuickMenuPresenter(QuickViews &views)
    : views_(views)
{
}

void QuickMenuPresenter::popUp(const StatusMenu &menu, const QRect &anchor, int minimumWidth)
{
    dismiss();
    model_ = std::make_unique<StatusMenuModel>(menu, minimumWidth);
    connect(model_.get(), &StatusMenuModel::chosen, this, [this](const std::function<void()> &action) {
        // The action runs after the menu is closed: it may open windows or end the process.
        QMetaObject::invokeMethod(this, action, Qt::QueuedConnection);
        dismiss();
    });
    window_ = views_.load({QUrl(u"qrc:/qt/qml/VelmoraMac/QuickViews/StatusMenuView.qml"_s),
                           {{u"menu"_s, QVariant::fromValue(model_.get())}},
                           {}});
    const QuickViews::Dependencies &desktop = views_.dependencies();
    const QQuickItem *view = window_->rootObject();
    const QSize size =
        view == nullptr ? QSize(1, 1) : QSizeF(view->implicitWidth(), view->implicitHeight()).toSize();
    desktop.windows.makePanel(*window_, {true, cornerRadius});
    desktop.windows.place(*window_, menuFrame(anchor, desktop.screens.workAreaAt(anchor.center()), size));
    window_->installEventFilter(this);
    window_->show();
    window_->raise();
}

void QuickMenuPresenter::dismiss()
{
    if (!window_)
        return;
    window_->removeEventFilter(this);
    window_->setMouseGrabEnabled(false);
    window_->setKeyboardGrabEnabled(false);
    window_ = nullptr;
    model_.release()->deleteLater(); // Its view is deleted later, too.
}

bool QuickMenuPresenter::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != window_.get())
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Expose:
        if (window_->isExposed())
            grabInput();
        break;
    case QEvent::MouseButtonPress: {
        const QPoint place = static_cast<QMouseEvent *>(event)->position().toPoint();
        if (QRect(QPoint(), window_->size()).contains(place))
            break;
        dismiss();
        return true;
    }
    case QEvent::KeyPress:
        return pressKey(*static_cast<QKeyEvent *>(event));
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void QuickMenuPresenter::grabInput()
{
    window_->setMouseGrabEnabled(true);
    window_->setKeyboardGrabEnabled(true);
}

bool QuickMenuPresenter::pressKey(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Escape:
        dismiss();
        break;
    case Qt::Key_Down:
        model_->moveCurrent(1);
        break;
    case Qt::Key_Up:
        model_->moveCurrent(-1);
        break;
    case Qt::Key_Home:
        model_->moveToFirst();
        break;
    case Qt::Key_End:
        model_->moveToLast();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        model_->chooseCurrent();
        break;
    default:
        model_->moveToNext(event.text());
        break;
    }
    return true;
}
