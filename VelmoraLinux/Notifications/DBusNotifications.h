#pragma once

#include <VelmoraPlatform/UserNotifications.h>

#include <QDBusConnection>
#include <QObject>

// The Desktop Notifications Specification's service, org.freedesktop.Notifications.
class DBusNotifications : public QObject, public UserNotifications {
    Q_OBJECT

public:
    // `identifier` names the desktop entry, whose icon and name the desktop shows.
    DBusNotifications(QDBusConnection bus, QString identifier);

    void post(Message message) override;

private:
    Q_SLOT void actionInvoked(uint id, const QString &action);

    QDBusConnection bus_;
    QString identifier_;
    uint id_ = 0; // Of the message that is shown.
    std::function<void()> activated_;
};
