#pragma once

#include <QSocketNotifier>

#include <memory>

// Makes SIGTERM, SIGINT and SIGHUP quit the application's event loop, except those that were ignored when the
// program was started. When the event loop does not hear of a signal at once, because somebody floods it, the
// program ends after a quarter of a second whatever it does. At most one object exists at a time.
class QuitSignals {
public:
    QuitSignals();
    ~QuitSignals();
    Q_DISABLE_COPY_MOVE(QuitSignals)

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};
