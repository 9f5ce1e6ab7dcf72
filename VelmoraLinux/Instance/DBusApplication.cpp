#include "DBusApplication.h"

using namespace Qt::StringLiterals;

void DBusApplication::reopen(const QVariantMap &platformData)
{
    QString token = platformData.value(u"activation-token"_s).toString();
    if (token.isEmpty())
        token = platformData.value(u"desktop-startup-id"_s).toString();
    Q_EMIT reopened(token.toUtf8());
}
