#pragma once

#include <VelmoraPlatform/ApplicationInstance.h>

#include <QObject>
#include <QStringList>
#include <QVariantMap>

// The D-Bus interface org.freedesktop.Application (Desktop Entry Specification, D-Bus activation). Its methods
// re-open the application, or run one of its actions.
class DBusApplication : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit DBusApplication(QObject *parent)
        : QObject(parent)
    {
    }

    // The interface's methods.
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData) { reopen(platformData); }

    Q_SCRIPTABLE void Open(const QStringList & /*uris*/, const QVariantMap &platformData)
    {
        reopen(platformData);
    }

    Q_SCRIPTABLE void ActivateAction(const QString &name, const QVariantList &parameter,
                                     const QVariantMap &platformData);

    Q_SIGNAL void reopened(const QByteArray &activationToken);
    Q_SIGNAL void actionChosen(ApplicationInstance::Action action, const QByteArray &activationToken);

private:
    void reopen(const QVariantMap &platformData);
};
