#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>

// How desktops start and activate an application over the bus. Every way in means the same to us: re-open.
class DBusApplication : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit DBusApplication(QObject *parent)
        : QObject(parent)
    {
    }

    // What the bus calls.
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData) { reopen(platformData); }

    Q_SCRIPTABLE void Open(const QStringList & /*uris*/, const QVariantMap &platformData)
    {
        reopen(platformData);
    }

    Q_SCRIPTABLE void ActivateAction(const QString & /*name*/, const QVariantList & /*parameter*/,
                                     const QVariantMap &platformData)
    {
        reopen(platformData);
    }

    Q_SIGNAL void reopened(const QByteArray &activationToken);

private:
    void reopen(const QVariantMap &platformData);
};
