#pragma once

#include <QObject>
#include <QTimer>

#include <initializer_list>

// Bounds what others may ask of our services on the bus in a tenth of a second.
//
// Qt hands over every call that has come, and goes on for as long as more come: a flood of calls whose answers take long
// would keep the program from everything else, and fill the memory with answers. So only the first `mostAtOnce` calls of
// each period are answered; the others get the error org.freedesktop.DBus.Error.UnknownObject, which takes no time. A
// period that is over ends when the event loop has come to its timers.
class CallBudget : public QObject {
public:
    static constexpr int mostAtOnce = 100; // A panel that starts makes twenty.

    // The services get nothing else from the event loop than calls: no queued connections, no calls from other threads.
    explicit CallBudget(std::initializer_list<QObject *> services);

    bool eventFilter(QObject *service, QEvent *event) override;

private:
    int calls_ = 0; // In this period.
    QTimer periodEnd_;
};
