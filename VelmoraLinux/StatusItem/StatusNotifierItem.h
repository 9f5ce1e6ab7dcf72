#pragma once

#include "StatusNotifierTypes.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>
#include <QPoint>

// The icon as a freedesktop StatusNotifierItem. Hosts read the properties and call the methods below. Unlike
// Qt's tray icon, it passes the coordinates of clicks on.
class StatusNotifierItem : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconThemePath READ iconFolder)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(StatusNotifierPixmaps IconPixmap READ icon)
    Q_PROPERTY(QString OverlayIconName READ noName)
    Q_PROPERTY(StatusNotifierPixmaps OverlayIconPixmap READ noIcon)
    Q_PROPERTY(QString AttentionIconName READ noName)
    Q_PROPERTY(StatusNotifierPixmaps AttentionIconPixmap READ noIcon)
    Q_PROPERTY(QString AttentionMovieName READ noName)
    Q_PROPERTY(StatusNotifierToolTip ToolTip READ toolTip)

public:
    // `id` is the item's Id property, `menu` the object path of the exported menu.
    StatusNotifierItem(QDBusConnection bus, QString id, QString title, QString menu);

    // Exports the item on the bus; StatusNotifierRegistration registers it with the watcher.
    [[nodiscard]] bool exportItem();
    static QString path();

    // Hosts take the icon by its name, if it has one, and else the pixmaps.
    void setIcon(const StatusNotifierPixmaps &icon, const QString &name);

    // Where hosts find icons by name besides the system's folders.
    void setIconFolder(const QString &folder) { iconFolder_ = folder; }

    void setToolTip(const QString &text);
    void setActive(bool active);

    [[nodiscard]] static QString category();

    [[nodiscard]] QString id() const { return id_; }

    [[nodiscard]] QString title() const { return title_; }

    [[nodiscard]] QString status() const;

    [[nodiscard]] static int windowId() { return 0; }

    [[nodiscard]] static QString noName() { return {}; }

    [[nodiscard]] QString iconName() const { return iconName_; }

    [[nodiscard]] QString iconFolder() const { return iconFolder_; }

    [[nodiscard]] QDBusObjectPath menu() const { return QDBusObjectPath(menu_); }

    [[nodiscard]] static bool itemIsMenu() { return false; }

    [[nodiscard]] StatusNotifierPixmaps icon() const { return icon_; }

    [[nodiscard]] static StatusNotifierPixmaps noIcon() { return {}; }

    [[nodiscard]] StatusNotifierToolTip toolTip() const { return {{}, {}, toolTip_, {}}; }

    // The interface's methods.
    Q_SCRIPTABLE void Activate(int x, int y);
    Q_SCRIPTABLE void ContextMenu(int x, int y);
    Q_SCRIPTABLE void SecondaryActivate(int x, int y);
    Q_SCRIPTABLE void Scroll(int delta, const QString &orientation);
    Q_SCRIPTABLE void ProvideXdgActivationToken(const QString &token);

    // The interface's signals.
    Q_SIGNAL Q_SCRIPTABLE void NewIcon();
    Q_SIGNAL Q_SCRIPTABLE void NewToolTip();
    Q_SIGNAL Q_SCRIPTABLE void NewStatus(const QString &status);

    Q_SIGNAL void activated(QPoint nativeHint);
    Q_SIGNAL void menuRequested(QPoint nativeHint);
    Q_SIGNAL void activationTokenProvided(const QByteArray &token);

private:
    QDBusConnection bus_;
    QString id_;
    QString title_;
    QString menu_;
    StatusNotifierPixmaps icon_;
    QString iconName_;
    QString iconFolder_;
    QString toolTip_;
    bool active_ = true;
};
