#pragma once

#include "DBusMenuTypes.h"

#include <VelmoraPlatform/StatusItem.h>

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>

// The menu exported as com.canonical.dbusmenu, for hosts that draw it themselves. Item 0 is the menu itself;
// its entries have the ids from 1 on.
class DBusMenu : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

public:
    explicit DBusMenu(QDBusConnection bus);

    [[nodiscard]] bool exportMenu();
    static QString path();

    void setMenu(StatusMenu menu);

    [[nodiscard]] static uint version() { return 3; }

    [[nodiscard]] static QString textDirection() { return QString::fromUtf16(u"ltr"); }

    [[nodiscard]] static QString status() { return QString::fromUtf16(u"normal"); }

    [[nodiscard]] static QStringList iconThemePath() { return {}; }

    // The interface's methods.
    Q_SCRIPTABLE uint GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                                DBusMenuLayout &layout);
    Q_SCRIPTABLE DBusMenuItems GetGroupProperties(const QList<int> &ids, const QStringList &propertyNames);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString &name);
    Q_SCRIPTABLE void Event(int id, const QString &eventId, const QDBusVariant &data, uint timestamp);
    Q_SCRIPTABLE QList<int> EventGroup(const DBusMenuEvents &events);
    Q_SCRIPTABLE bool AboutToShow(int id);
    Q_SCRIPTABLE QList<int> AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors);

    // The interface's signals.
    Q_SIGNAL Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);
    Q_SIGNAL Q_SCRIPTABLE void ItemsPropertiesUpdated(const DBusMenuItems &updated,
                                                      const DBusMenuItemKeysList &removed);

    // A host is about to show the menu.
    Q_SIGNAL void opening();

private:
    [[nodiscard]] bool knows(int id) const;
    [[nodiscard]] QVariantMap properties(int id) const;
    void run(int id);

    QDBusConnection bus_;
    StatusMenu menu_;
    uint revision_ = 1;
};
