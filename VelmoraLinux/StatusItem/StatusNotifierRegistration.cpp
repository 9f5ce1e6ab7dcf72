#include "StatusNotifierRegistration.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace {
const QString watcherName = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;
} // namespace

StatusNotifierRegistration::StatusNotifierRegistration(QDBusConnection bus)
    : bus_(std::move(bus))
{
    auto *services =
        new QDBusServiceWatcher(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(services, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) {
                if (newOwner.isEmpty())
                    setHost(false);
                else
                    registerItem();
            });
    // Without a service name: with one, Qt would block until the bus has resolved it.
    for (const char *signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        bus_.connect({}, watcherPath, watcherName, QLatin1String(signal), this, SLOT(askForHost()));
}

void StatusNotifierRegistration::start()
{
    registerItem();
}

void StatusNotifierRegistration::registerItem()
{
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath, watcherName,
                                               u"RegisterStatusNotifierItem"_s);
    call << bus_.baseService();
    auto *pending = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        pending->deleteLater();
        if (pending->isError()) {
            setHost(false);
            return;
        }
        Q_EMIT registered();
        askForHost();
    });
}

void StatusNotifierRegistration::askForHost()
{
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath, u"org.freedesktop.DBus.Properties"_s,
                                               u"Get"_s);
    call << watcherName << u"IsStatusNotifierHostRegistered"_s;
    auto *pending = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        pending->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *pending;
        // A watcher without this property has accepted our registration, so a host is assumed.
        setHost(reply.isError() ? reply.error().type() != QDBusError::ServiceUnknown
                                : reply.value().variant().toBool());
    });
}

void StatusNotifierRegistration::setHost(bool present)
{
    hasHost_ = present;
    Q_EMIT hostChanged();
}
