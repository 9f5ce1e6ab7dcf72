#pragma once

#include <QPoint>

#include <functional>

// Sees left and right mouse-downs anywhere on the desktop without taking them from the window they are meant
// for.
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
    // Harmless when nothing was started. The handler may call it.
    virtual void stop() = 0;
};
