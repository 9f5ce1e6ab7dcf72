#include "StatusItemTip.h"

#include "StatusItemAnchor.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>
#include <QScreen>

using namespace std::chrono_literals;

namespace {
constexpr auto hoverDelay = 500ms;
constexpr QMargins textMargins(8, 5, 8, 5);
} // namespace

class TipWindow final : public QRasterWindow {
public:
    explicit TipWindow(bool isDark)
        : isDark_(isDark)
    {
        setFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                 Qt::X11BypassWindowManagerHint | Qt::WindowTransparentForInput);
    }

    [[nodiscard]] static QSize sizeFor(const QString &text)
    {
        const QFontMetrics metrics(QGuiApplication::font());
        return QSize(metrics.horizontalAdvance(text), metrics.height()).grownBy(textMargins);
    }

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        QPainter painter(this);
        const QRect frame(0, 0, width(), height());
        painter.setBrush(isDark_ ? QColor(0x2b, 0x2b, 0x2d) : QColor(0xf7, 0xf7, 0xf7));
        painter.setPen(isDark_ ? QColor(0x58, 0x58, 0x5a) : QColor(0xb4, 0xb4, 0xb6));
        painter.drawRect(frame.adjusted(0, 0, -1, -1));
        painter.setPen(isDark_ ? Qt::white : Qt::black);
        painter.drawText(frame, Qt::AlignCenter, title());
    }

private:
    bool isDark_;
};

StatusItemTip::StatusItemTip(const Appearance &appearance, Place place)
    : appearance_(appearance)
    , place_(std::move(place))
{
    hoverTimer_.setSingleShot(true);
    hoverTimer_.setInterval(hoverDelay);
    hoverTimer_.callOnTimeout(this, &StatusItemTip::show);
}

StatusItemTip::~StatusItemTip() = default;

void StatusItemTip::setText(const QString &text)
{
    text_ = text;
    if (window_)
        show();
}

void StatusItemTip::pointerEntered()
{
    hoverTimer_.start();
}

void StatusItemTip::hide()
{
    hoverTimer_.stop();
    window_.reset();
}

void StatusItemTip::show()
{
    const auto icon = place_();
    const QScreen *screen = icon ? QGuiApplication::screenAt(icon->center()) : nullptr;
    if (screen == nullptr)
        return hide();
    window_ = std::make_unique<TipWindow>(appearance_.colorScheme() == Appearance::ColorScheme::dark);
    window_->setTitle(text_);
    window_->setGeometry(tipFrame(*icon, screen->availableGeometry(), TipWindow::sizeFor(text_)));
    window_->show();
}
