#pragma once

#include <QProcess>
#include <QString>

// A private session bus; ends with the object.
class SessionBus {
public:
    SessionBus();
    ~SessionBus();
    Q_DISABLE_COPY_MOVE(SessionBus)

    // Empty when it did not come up.
    [[nodiscard]] const QString &address() const { return address_; }

private:
    QProcess daemon_;
    QString address_;
};
