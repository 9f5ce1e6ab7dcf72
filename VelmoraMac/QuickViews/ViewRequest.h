#pragma once

#include <VelmoraMac/Shell/View.h>

#include <QObject>

// Runs a view's request when its signal is sent. Belongs to the view's object.
class ViewRequest : public QObject {
    Q_OBJECT

public:
    // `view` may be null; a view without such a signal is a mistake that is reported.
    static void connect(QObject *view, const View::Request &request);

private:
    ViewRequest(QObject *view, std::function<void()> handler);
    Q_SLOT void run();

    std::function<void()> handler_;
};
