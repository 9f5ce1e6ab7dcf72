#pragma once

#include <QSocketNotifier>

#include <memory>

// Makes SIGTERM, SIGINT and SIGHUP quit the application's event loop, except those that were ignored when the
// program was started. Where that takes longer than 0.23 s, because somebody floods the event loop or the machine
// has no time for it, the program ends then whatever it does. At most one object exists at a time.
class QuitSignals {
public:
    QuitSignals();
    ~QuitSignals();
    Q_DISABLE_COPY_MOVE(QuitSignals)

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};
