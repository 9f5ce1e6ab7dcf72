#pragma once

#include <QSocketNotifier>

#include <memory>

// Lets SIGTERM, SIGINT and SIGHUP end the application in the ordinary way. One at a time.
class QuitSignals {
public:
    QuitSignals();
    ~QuitSignals();
    Q_DISABLE_COPY_MOVE(QuitSignals)

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};
