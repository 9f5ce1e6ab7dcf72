#include "DBusApplication.h"

#include <VelmoraLinux/Process/ActionName.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray tokenIn(const QVariantMap &platformData)
{
    const QString token = platformData.value(u"activation-token"_s).toString();
    return (token.isEmpty() ? platformData.value(u"desktop-startup-id"_s).toString() : token).toUtf8();
}

} // namespace

void DBusApplication::reopen(const QVariantMap &platformData)
{
    Q_EMIT reopened(tokenIn(platformData));
}

void DBusApplication::ActivateAction(const QString &name, const QVariantList & /*parameter*/,
                                     const QVariantMap &platformData)
{
    if (const auto action = ActionName::parse(name.toStdString()))
        Q_EMIT actionChosen(*action, tokenIn(platformData));
    else
        reopen(platformData);
}
