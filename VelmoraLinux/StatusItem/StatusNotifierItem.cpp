#include "StatusNotifierItem.h"

#include <QDBusMetaType>

using namespace Qt::StringLiterals;

StatusNotifierItem::StatusNotifierItem(QDBusConnection bus, QString id, QString title, QString menu)
    : bus_(std::move(bus))
    , id_(std::move(id))
    , title_(std::move(title))
    , menu_(std::move(menu))
{
    qDBusRegisterMetaType<StatusNotifierPixmap>();
    qDBusRegisterMetaType<StatusNotifierPixmaps>();
    qDBusRegisterMetaType<StatusNotifierToolTip>();
}

bool StatusNotifierItem::exportItem()
{
    return bus_.registerObject(path(), this,
                               QDBusConnection::ExportAllProperties |
                                   QDBusConnection::ExportScriptableInvokables |
                                   QDBusConnection::ExportScriptableSignals);
}

QString StatusNotifierItem::path()
{
    return u"/StatusNotifierItem"_s; // The default path when only a bus name was registered.
}

void StatusNotifierItem::setIcon(const StatusNotifierPixmaps &icon, const QString &name)
{
    icon_ = icon;
    iconName_ = name;
    Q_EMIT NewIcon();
}

void StatusNotifierItem::setToolTip(const QString &text)
{
    if (text == toolTip_)
        return;
    toolTip_ = text;
    Q_EMIT NewToolTip();
}

void StatusNotifierItem::setActive(bool active)
{
    if (active == active_)
        return;
    active_ = active;
    Q_EMIT NewStatus(status());
}

QString StatusNotifierItem::category()
{
    return u"ApplicationStatus"_s;
}

QString StatusNotifierItem::status() const
{
    return active_ ? u"Active"_s : u"Passive"_s;
}

void StatusNotifierItem::Activate(int x, int y)
{
    Q_EMIT activated({x, y});
}

void StatusNotifierItem::ContextMenu(int x, int y)
{
    Q_EMIT menuRequested({x, y});
}

// The middle button and the wheel have no function; the calls succeed without effect.
void StatusNotifierItem::SecondaryActivate(int /*x*/, int /*y*/) {}

void StatusNotifierItem::Scroll(int /*delta*/, const QString & /*orientation*/) {}

void StatusNotifierItem::ProvideXdgActivationToken(const QString &token)
{
    Q_EMIT activationTokenProvided(token.toUtf8());
}
