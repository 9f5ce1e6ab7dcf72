#include "DBusApplication.h"

void DBusApplication::reopen(const QVariantMap &platformData)
{
    QString token = platformData.value(QStringLiteral("activation-token")).toString();
    if (token.isEmpty())
        token = platformData.value(QStringLiteral("desktop-startup-id")).toString();
    Q_EMIT reopened(token.toUtf8());
}
