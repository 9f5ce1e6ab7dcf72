#pragma once

#include "View.h"

#include <QSize>
#include <QString>

#include <functional>
#include <memory>

// An ordinary window with a title bar. Its close button only hides it.
class AppWindow {
public:
    virtual ~AppWindow() = default;
    [[nodiscard]] virtual bool isVisible() const = 0;
    // Moves it to the middle of the main screen's work area.
    virtual void centre() = 0;
    // Shows it above other applications' windows, on the current desktop, with the keyboard focus.
    virtual void bringToFront() = 0;
    // Shows it at its position without taking the keyboard focus.
    virtual void showQuietly() = 0;
};

struct AppWindowOptions {
    QString title;
    QSize contentSize;
    QSize minimumSize;
    // As tall as the view says that it has to be, now and later; `contentSize` gives the width.
    bool fitsContent = false;
    std::function<void()> closed = [] {}; // The close button was pressed.
};

class AppWindowFactory {
public:
    virtual ~AppWindowFactory() = default;
    // A window that is not on screen yet.
    [[nodiscard]] virtual std::unique_ptr<AppWindow> makeWindow(const View &view,
                                                                const AppWindowOptions &options) = 0;
};
