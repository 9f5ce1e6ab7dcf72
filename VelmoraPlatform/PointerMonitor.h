#pragma once

#include <QPoint>

#include <functional>

// Observes presses of the left and right mouse button anywhere on the desktop; the pressed window gets them as usual.
class PointerMonitor {
public:
    struct Press {
        QPoint position;
        // The pressed window; a panel of ours is known by its QWindow::winId().
        quintptr window = 0;
    };

    using Handler = std::function<void(const Press &press)>;

    virtual ~PointerMonitor() = default;
    // Reports on the main thread until `stop`; a second start replaces the handler.
    virtual void start(Handler handler) = 0;
    // No effect when nothing was started. The handler may call it.
    virtual void stop() = 0;
};
