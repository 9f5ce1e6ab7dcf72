#include "DBusNotifications.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

using namespace Qt::StringLiterals;

namespace {
const QString service = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;
const QString defaultAction = u"default"_s; // What a click on the message itself means.
constexpr int usualTime = -1;               // The desktop decides how long it is shown.
} // namespace

DBusNotifications::DBusNotifications(QDBusConnection bus, QString identifier)
    : bus_(std::move(bus))
    , identifier_(std::move(identifier))
{
    // Without a service name: with one, Qt would block until the bus has resolved it.
    bus_.connect({}, path, service, u"ActionInvoked"_s, this, SLOT(actionInvoked(uint, QString)));
}

void DBusNotifications::post(Message message)
{
    auto call = QDBusMessage::createMethodCall(service, path, service, u"Notify"_s);
    call << u"Velmora"_s << id_ << identifier_ << message.title << message.text
         << QStringList{defaultAction, QString()}
         << QVariantMap{{u"desktop-entry"_s, identifier_}, {u"category"_s, u"presence"_s}} << usualTime;
    activated_ = std::move(message.activated);
    auto *pending = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        pending->deleteLater();
        const QDBusPendingReply<uint> reply = *pending;
        id_ = reply.isError() ? 0 : reply.value();
    });
}

void DBusNotifications::actionInvoked(uint id, const QString &action)
{
    if (id == id_ && id_ != 0 && action == defaultAction && activated_)
        activated_();
}
