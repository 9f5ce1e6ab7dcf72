#pragma once

#include <VelmoraMac/Shell/View.h>

#include <QObject>

// Runs a view's request when its signal is emitted. Owned by the view's object.
class ViewRequest : public QObject {
    Q_OBJECT

public:
    // `view` may be null. Warns when the view has no such signal.
    static void connect(QObject *view, const View::Request &request);

private:
    ViewRequest(QObject *view, std::function<void()> handler);
    Q_SLOT void run();

    std::function<void()> handler_;
};
