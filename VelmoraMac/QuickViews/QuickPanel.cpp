#include "QuickPanel.h"

#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QKeyEvent>
#include <QQuickItem>

#include <utility>

using namespace Qt::StringLiterals;

QuickPanel::QuickPanel(QuickWindow window, const PanelOptions &options, WindowManager &windows,
                       const Appearance &appearance)
    : window_(std::move(window))
    , cancelled_(options.cancelled)
    , windows_(windows)
    , frame_(options.size, appearance, [this](const QRect &frame) { windows_.place(*window_, frame); })
{
    windows_.makePanel(*window_, {options.acceptsMouse, options.cornerRadius, options.takesKeyboard});
    followSurroundings();
    window_->setTitle(u"Velmora"_s); // Never seen, but read by assistive tools.
    window_->resize(options.size);
    window_->installEventFilter(this);
}

// What of the view is translucent shows the theme's material where nothing composites.
void QuickPanel::followSurroundings()
{
    auto *surroundings = Surroundings::in(*window_->engine());
    if (surroundings == nullptr)
        return;
    const auto fill = [this, surroundings] {
        const QQuickItem *view = window_->rootObject();
        const QVariant ground = view != nullptr ? view->property("ground") : QVariant();
        window_->setColor(surroundings->blendsWindows() ? QColor(Qt::transparent)
                          : ground.isValid()            ? ground.value<QColor>()
                                                        : surroundings->colors().windowBackground);
    };
    fill();
    connect(surroundings, &Surroundings::paletteChanged, this, fill);
    connect(surroundings, &Surroundings::blendsWindowsChanged, this, [this, fill] {
        fill();
        windows_.place(*window_, window_->geometry());
    });
}

void QuickPanel::orderFront()
{
    window_->show();
    window_->raise();
}

void QuickPanel::orderOut()
{
    frame_.stop();
    if (std::exchange(keyboard_, Keyboard::none) == Keyboard::taken)
        windows_.returnKeyboard(*window_);
    window_->hide();
}

void QuickPanel::takeKeyboard()
{
    keyboard_ = Keyboard::wanted;
    giveKeyboardWhenExposed();
}

void QuickPanel::giveKeyboardWhenExposed()
{
    if (keyboard_ != Keyboard::wanted || !window_->isExposed())
        return;
    keyboard_ = Keyboard::taken;
    windows_.giveKeyboard(*window_);
}

void QuickPanel::cancel()
{
    const auto cancelled = cancelled_; // It may delete this panel.
    if (cancelled)
        cancelled();
}

bool QuickPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != window_.get())
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Expose:
        giveKeyboardWhenExposed();
        break;
    case QEvent::FocusOut:
        if (keyboard_ == Keyboard::taken)
            QMetaObject::invokeMethod(
                this, [this] { cancel(); }, Qt::QueuedConnection);
        break;
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent *>(event)->key() != Qt::Key_Escape || !cancelled_)
            break;
        cancel();
        return true;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
