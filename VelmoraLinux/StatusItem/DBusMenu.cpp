#include "DBusMenu.h"

#include <QDBusError>
#include <QDBusMetaType>

using namespace Qt::StringLiterals;

namespace {
QVariantMap entryProperties(const StatusMenuEntry &entry)
{
    if (entry.isSeparator())
        return {{u"type"_s, u"separator"_s}};
    QString label = entry.title;
    label.replace(u'_', "__"_L1); // A single underscore marks an access key.
    QVariantMap properties{{u"label"_s, label}};
    if (entry.check != StatusMenuEntry::Check::none) {
        properties[u"toggle-type"_s] = u"checkmark"_s;
        properties[u"toggle-state"_s] = entry.check == StatusMenuEntry::Check::on ? 1 : 0;
    }
    return properties;
}

QVariantMap chosen(const QVariantMap &all, const QStringList &names)
{
    if (names.isEmpty())
        return all; // An empty list means all properties.
    QVariantMap some;
    for (const QString &name : names) {
        if (all.contains(name))
            some[name] = all[name];
    }
    return some;
}
} // namespace

DBusMenu::DBusMenu(QDBusConnection bus)
    : bus_(std::move(bus))
{
    qDBusRegisterMetaType<DBusMenuItem>();
    qDBusRegisterMetaType<DBusMenuItems>();
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuItemKeys>();
    qDBusRegisterMetaType<DBusMenuItemKeysList>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<DBusMenuEvents>();
    // Qt finds the D-Bus signatures by the type names in the declarations.
    qRegisterMetaType<DBusMenuItems>("DBusMenuItems");
    qRegisterMetaType<DBusMenuItemKeysList>("DBusMenuItemKeysList");
    qRegisterMetaType<DBusMenuEvents>("DBusMenuEvents");
}

bool DBusMenu::exportMenu()
{
    return bus_.registerObject(path(), this,
                               QDBusConnection::ExportAllProperties |
                                   QDBusConnection::ExportScriptableInvokables |
                                   QDBusConnection::ExportScriptableSignals);
}

QString DBusMenu::path()
{
    return u"/StatusMenu"_s;
}

void DBusMenu::setMenu(StatusMenu menu)
{
    menu_ = std::move(menu);
    Q_EMIT LayoutUpdated(++revision_, 0);
}

bool DBusMenu::knows(int id) const
{
    return id >= 0 && static_cast<size_t>(id) <= menu_.size();
}

QVariantMap DBusMenu::properties(int id) const
{
    if (id == 0)
        return {{u"children-display"_s, u"submenu"_s}};
    return entryProperties(menu_.at(static_cast<size_t>(id) - 1));
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                         DBusMenuLayout &layout)
{
    if (!knows(parentId)) {
        sendErrorReply(QDBusError::InvalidArgs, u"No such menu item"_s);
        return 0;
    }
    layout = {parentId, chosen(properties(parentId), propertyNames), {}};
    if (parentId == 0 && recursionDepth != 0) {
        for (int id = 1; knows(id); ++id)
            layout.children << DBusMenuLayout{id, chosen(properties(id), propertyNames), {}};
    }
    return revision_;
}

DBusMenuItems DBusMenu::GetGroupProperties(const QList<int> &ids, const QStringList &propertyNames)
{
    DBusMenuItems items;
    if (ids.isEmpty()) { // An empty list means all items.
        for (int id = 0; knows(id); ++id)
            items << DBusMenuItem{id, chosen(properties(id), propertyNames)};
    }
    for (const int id : ids) {
        if (knows(id))
            items << DBusMenuItem{id, chosen(properties(id), propertyNames)};
    }
    return items;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString &name)
{
    const QVariant value = knows(id) ? properties(id).value(name) : QVariant();
    if (!value.isValid()) {
        sendErrorReply(QDBusError::InvalidArgs, u"No such menu item or property"_s);
        return QDBusVariant(QString());
    }
    return QDBusVariant(value);
}

void DBusMenu::Event(int id, const QString &eventId, const QDBusVariant & /*data*/, uint /*timestamp*/)
{
    if (eventId == "clicked"_L1)
        run(id);
    else if (id == 0 && eventId == "opened"_L1)
        Q_EMIT opening();
}

QList<int> DBusMenu::EventGroup(const DBusMenuEvents &events)
{
    QList<int> unknown;
    for (const DBusMenuEvent &event : events) {
        if (knows(event.id))
            Event(event.id, event.eventId, event.data, event.timestamp);
        else
            unknown << event.id;
    }
    return unknown;
}

bool DBusMenu::AboutToShow(int id)
{
    if (id == 0)
        Q_EMIT opening();
    return false; // No update needed: every change is announced by LayoutUpdated when it happens.
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors)
{
    for (const int id : ids) {
        if (knows(id))
            AboutToShow(id);
        else
            idErrors << id;
    }
    return {};
}

void DBusMenu::run(int id)
{
    if (id <= 0 || !knows(id))
        return;
    const auto action = menu_[static_cast<size_t>(id) - 1].action;
    // Queued, so that the host gets its reply first: an action may end the process.
    if (action)
        QMetaObject::invokeMethod(this, action, Qt::QueuedConnection);
}
