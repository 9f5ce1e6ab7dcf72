#include "QuickPanel.h"

#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QKeyEvent>
#include <QQuickItem>

using namespace Qt::StringLiterals;

QuickPanel::QuickPanel(QuickWindow window, const PanelOptions &options, WindowManager &windows,
                       const Appearance &appearance)
    : window_(std::move(window))
    , cancelled_(options.cancelled)
    , windows_(windows)
    , frame_(options.size, appearance, [this](const QRect &frame) { windows_.place(*window_, frame); })
{
    windows_.makePanel(*window_, {options.acceptsMouse, options.cornerRadius});
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
    window_->hide();
}

bool QuickPanel::eventFilter(QObject *watched, QEvent *event)
{
    const bool isEscape =
        event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape;
    if (watched != window_.get() || !isEscape || !cancelled_)
        return QObject::eventFilter(watched, event);
    cancelled_();
    return true;
}
