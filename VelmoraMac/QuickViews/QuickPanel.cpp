#include "QuickPanel.h"

#include <QKeyEvent>

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
    if (!windows_.blendsWindows()) {
        const bool isDark = appearance_.colorScheme() == Appearance::ColorScheme::dark;
        window_->setColor(isDark ? QColor(0x24, 0x24, 0x26) : QColor(0xf2, 0xf2, 0xf4));
    }
    window_->resize(options.size);
    window_->installEventFilter(this);
    growth_.setDuration(growthTime);
    growth_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&growth_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &frame) { windows_.place(*window_, frame.toRect()); });
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
