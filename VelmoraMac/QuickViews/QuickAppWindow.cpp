#include "QuickAppWindow.h"

#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QEvent>
#include <QQuickItem>

#include <algorithm>

namespace {

constexpr int largest = 16384;
constexpr QSize
    decoration(4, 34); // What a window manager draws around a window: known only when it is on screen.

// How large a view may be.
QSize roomOn(const Screens &screens)
{
    const QSize area = screens.mainWorkArea().size();
    return area.isEmpty() ? QSize(largest, largest) : area - decoration;
}

void fitContent(QQuickView &window, const Screens &screens)
{
    const int height = std::min(qCeil(window.rootObject()->implicitHeight()), roomOn(screens).height());
    window.setMinimumHeight(height);
    window.resize(window.width(), height);
}

// Reports the close button. Owned by the window that it watches.
class CloseWatcher final : public QObject {
public:
    CloseWatcher(std::function<void()> closed, QObject *window)
        : QObject(window)
        , closed_(std::move(closed))
    {
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Close)
            closed_();
        return false;
    }

private:
    std::function<void()> closed_;
};

} // namespace

QuickAppWindow::QuickAppWindow(QuickWindow window, const AppWindowOptions &options, WindowManager &windows,
                               const Screens &screens)
    : window_(std::move(window))
    , windows_(windows)
    , screens_(screens)
{
    window_->setTitle(options.title);
    // On a small screen both are smaller; the views scroll.
    window_->setMinimumSize(options.minimumSize.boundedTo(roomOn(screens)));
    window_->resize(options.contentSize.boundedTo(roomOn(screens)));
    if (const QQuickItem *view = window_->rootObject(); view != nullptr && options.fitsContent) {
        const auto fit = [window = window_.get(), &screens] { fitContent(*window, screens); };
        fit();
        QObject::connect(view, &QQuickItem::implicitHeightChanged, window_.get(), fit);
    }
    followSurroundings();
    window_->installEventFilter(new CloseWatcher(options.closed, window_.get()));
}

// Before the view's first frame, and beside it while the window grows.
void QuickAppWindow::followSurroundings()
{
    auto *surroundings = Surroundings::in(*window_->engine());
    if (surroundings == nullptr)
        return;
    const auto fill = [window = window_.get(), surroundings] {
        window->setColor(surroundings->colors().windowBackground);
    };
    fill();
    QObject::connect(surroundings, &Surroundings::paletteChanged, window_.get(), fill);
}

void QuickAppWindow::centre()
{
    QRect frame(QPoint(), window_->size());
    frame.moveCenter(screens_.mainWorkArea().center());
    window_->setPosition(frame.topLeft());
}

void QuickAppWindow::bringToFront()
{
    window_->setWindowStates(window_->windowStates() & ~Qt::WindowMinimized);
    window_->show();
    windows_.activate(*window_);
}

void QuickAppWindow::showQuietly()
{
    window_->setProperty("_q_showWithoutActivating", true); // Read by Qt's platform plugins.
    window_->show();
    window_->setProperty("_q_showWithoutActivating", false);
}
