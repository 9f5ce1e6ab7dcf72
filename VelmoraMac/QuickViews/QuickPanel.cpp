#include "QuickPanel.h"

#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QKeyEvent>
#include <QQuickItem>

using namespace Qt::StringLiterals;

namespace {
constexpr int growthTime = 200; // Milliseconds.
} // namespace

QuickPanel::QuickPanel(QuickWindow window, const PanelOptions &options, WindowManager &windows,
                       const Appearance &appearance)
    : window_(std::move(window))
    , cancelled_(options.cancelled)
    , windows_(windows)
    , appearance_(appearance)
    , frame_(QPoint(), options.size)
{
    windows_.makePanel(*window_, {options.acceptsMouse, options.cornerRadius});
    followSurroundings();
    window_->setTitle(u"Velmora"_s); // Never seen, but read by assistive tools.
    window_->resize(options.size);
    window_->installEventFilter(this);
    growth_.setDuration(growthTime);
    growth_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&growth_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &frame) { windows_.place(*window_, frame.toRect()); });
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

void QuickPanel::setFrame(const QRect &frame, FrameChange change)
{
    const QRect shown =
        growth_.state() == QAbstractAnimation::Running ? growth_.currentValue().toRect() : frame_;
    growth_.stop();
    frame_ = frame;
    if (change == FrameChange::atOnce || appearance_.reducesMotion()) {
        windows_.place(*window_, frame);
        return;
    }
    growth_.setStartValue(shown);
    growth_.setEndValue(frame);
    growth_.start();
}

void QuickPanel::orderFront()
{
    window_->show();
    window_->raise();
}

void QuickPanel::orderOut()
{
    growth_.stop();
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
