#pragma once

#include <QSocketNotifier>

#include <memory>

// Makes SIGTERM, SIGINT and SIGHUP quit the application's event loop, except those that were ignored when the
// program was started. At most one object exists at a time.
class QuitSignals {
public:
    QuitSignals();
    ~QuitSignals();
    Q_DISABLE_COPY_MOVE(QuitSignals)

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};
