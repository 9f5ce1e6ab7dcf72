#pragma once

#include <VelmoraMac/Shell/View.h>

#include <QImage>
#include <QObject>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickWindow>

#include <memory>

// A Qt Quick view that is drawn into a picture instead of a window on the screen.
class OffscreenView : public QObject {
    Q_OBJECT

public:
    OffscreenView(QQmlEngine &engine, const View &view);
    ~OffscreenView() override;

    void resize(QSize size);
    // The view as it is now, `scale` pixels a point. Valid until the next call.
    [[nodiscard]] const QImage &draw(double scale);
    // Delivers an event as a window on the screen gets it.
    void deliver(QEvent &event);
    // The view is gone from now on; nothing is drawn any more.
    void close();

    [[nodiscard]] QQuickItem *rootItem() const { return root_.get(); }

Q_SIGNALS:
    // The next picture will be another one.
    void changed();

private:
    std::unique_ptr<QQuickRenderControl> control_; // Ends before its window.
    QQuickWindow window_;
    std::unique_ptr<QQuickItem> root_; // Null when the view could not be loaded, which Qt has reported.
    QImage picture_;
};
