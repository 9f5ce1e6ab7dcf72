#include "PortalLoginItem.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;

} // namespace

PortalLoginItem::PortalLoginItem(QDBusConnection bus, QStringList command, QString reason)
    : bus_(std::move(bus))
    , command_(std::move(command))
    , reason_(std::move(reason))
{
}

bool PortalLoginItem::registerItem()
{
    return requestAutostart(true);
}

bool PortalLoginItem::unregisterItem()
{
    return requestAutostart(false);
}

void PortalLoginItem::setRefusalHandler(RefusalHandler handler)
{
    refusal_ = std::move(handler);
}

bool PortalLoginItem::requestAutostart(bool autostart)
{
    if (!bus_.isConnected())
        return false;
    closeRequest();
    wanted_ = autostart;
    const QString token = u"velmora"_s + QUuid::createUuid().toString(QUuid::Id128);
    const QString sender = bus_.baseService().mid(1).replace(u'.', u'_');
    request_ = u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(sender, token);
    // Connected before the call: the response may arrive before the call's reply.
    bus_.connect(portalService, request_, requestInterface, u"Response"_s, this,
                 SLOT(responseReceived(uint, QVariantMap)));

    QDBusMessage call =
        QDBusMessage::createMethodCall(portalService, u"/org/freedesktop/portal/desktop"_s,
                                       u"org.freedesktop.portal.Background"_s, u"RequestBackground"_s);
    const QVariantMap options{{u"handle_token"_s, token},
                              {u"reason"_s, reason_},
                              {u"autostart"_s, autostart},
                              {u"commandline"_s, command_},
                              {u"dbus-activatable"_s, false}};
    call.setArguments({QString(), options});
    auto *watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, request = request_, watcher] {
        watcher->deleteLater();
        if (watcher->isError() && request == request_)
            reportRefusal();
    });
    return true;
}

void PortalLoginItem::responseReceived(uint response, const QVariantMap &results)
{
    if (response != 0 || results.value(u"autostart"_s).toBool() != wanted_)
        reportRefusal();
    else
        closeRequest();
}

void PortalLoginItem::closeRequest()
{
    if (request_.isEmpty())
        return;
    bus_.disconnect(portalService, request_, requestInterface, u"Response"_s, this,
                    SLOT(responseReceived(uint, QVariantMap)));
    request_.clear();
}

void PortalLoginItem::reportRefusal()
{
    closeRequest();
    if (refusal_)
        refusal_();
}
