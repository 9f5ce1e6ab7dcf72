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
    // By a second click on the icon, which a window's grab would have had.
    const bool isAskedToClose = surface_ != nullptr;
    dismiss();
    if (isAskedToClose)
        return;
    model_ = std::make_unique<StatusMenuModel>(menu, minimumWidth);
    connect(model_.get(), &StatusMenuModel::chosen, this, [this](const std::function<void()> &action) {
        // The action runs after the menu is closed: it may open windows or end the process.
        QMetaObject::invokeMethod(this, action, Qt::QueuedConnection);
        dismiss();
    });
    const View view{QUrl(u"qrc:/qt/qml/VelmoraMac/QuickViews/StatusMenuView.qml"_s),
                    {{u"menu"_s, QVariant::fromValue(model_.get())}},
                    {}};
    PanelSurfaces *surfaces = views_.dependencies().surfaces;
    if (surfaces != nullptr && surfaces->areOffered())
        showSurface(view, anchor, *surfaces);
    else
        showWindow(view, anchor);
}

QRect QuickMenuPresenter::frameFor(const QQuickItem *view, const QRect &anchor) const
{
    const QSize size =
        view == nullptr ? QSize(1, 1) : QSizeF(view->implicitWidth(), view->implicitHeight()).toSize();
    return menuFrame(anchor, views_.dependencies().screens.workAreaAt(anchor.center()), size);
}

void QuickMenuPresenter::showWindow(const View &view, const QRect &anchor)
{
    window_ = views_.load(view);
    WindowManager &windows = views_.dependencies().windows;
    windows.makePanel(*window_, {true, cornerRadius});
    windows.place(*window_, frameFor(window_->rootObject(), anchor));
    window_->installEventFilter(this);
    window_->show();
    window_->raise();
}

void QuickMenuPresenter::showSurface(const View &view, const QRect &anchor, PanelSurfaces &surfaces)
{
    picture_ = views_.loadOffscreen(view);
    const QRect frame = frameFor(picture_->rootItem(), anchor);
    picture_->resize(frame.size());
    surface_ = surfaces.makeSurface(
        {.acceptsMouse = true, .takesKeyboard = true},
        {.draw = [this](double scale) -> const QImage & { return picture_->draw(scale); },
         .input = [this](QEvent &event) { handleInput(event); },
         .removed = [this] { dismiss(); }});
    connect(picture_.get(), &OffscreenView::changed, this, [this] {
        if (surface_)
            surface_->requestPicture();
    });
    surface_->setFrame(frame);
    surface_->show();
}

void QuickMenuPresenter::handleInput(QEvent &event)
{
    if (event.type() == QEvent::FocusOut)
        dismiss();
    else if (event.type() == QEvent::KeyPress)
        pressKey(static_cast<QKeyEvent &>(event));
    else
        picture_->deliver(event);
}

void QuickMenuPresenter::dismiss()
{
    if (!model_)
        return;
    surface_ = nullptr;
    picture_ = nullptr;
    if (window_) {
        window_->removeEventFilter(this);
        window_->setMouseGrabEnabled(false);
        window_->setKeyboardGrabEnabled(false);
        window_ = nullptr;
    }
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
