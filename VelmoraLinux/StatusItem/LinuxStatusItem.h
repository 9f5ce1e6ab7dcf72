#pragma once

#include "DBusMenu.h"
#include "StatusItemAnchor.h"
#include "StatusItemTip.h"
#include "StatusNotifierItem.h"
#include "StatusNotifierRegistration.h"
#include "XEmbedIcon.h"

#include <VelmoraLinux/Bus/CallBudget.h>
#include <VelmoraLinux/Windows/ActivationToken.h>
#include <VelmoraPlatform/Appearance.h>
#include <VelmoraPlatform/Screens.h>
#include <VelmoraPlatform/StatusItem.h>

#include <QElapsedTimer>
#include <QScreen>
#include <QTimer>

#include <functional>
#include <vector>

// The status icon of Linux desktops: a StatusNotifierItem where a host shows those, otherwise a window in a
// system tray of the older System Tray Protocol (XEmbed). Hosts may start after us, end and start again.
class LinuxStatusItem : public QObject, public StatusItem {
    Q_OBJECT

public:
    struct Dependencies {
        QDBusConnection bus;
        X11Display *xcb; // May be null.
        const Screens &screens;
        Appearance &appearance;
        ActivationToken &activationToken;
        // The theme with the icon's drawings, on a desktop that colours them; empty elsewhere.
        QString iconFolder = {};
        // Finds the icon from the place that its host reports for a click, where that alone does not tell enough.
        std::function<void(QPoint hint, std::function<void(const QRect &icon)> done)> locateIcon = {};
    };

    // `id` is the item's Id property, `title` the name that users read.
    LinuxStatusItem(const Dependencies &dependencies, const QString &id, const QString &title);

    // `done` runs once, in the event loop, when it is known which host shows the icon, or that none does.
    void whenHostIsKnown(std::function<void()> done);

    void setEvents(Events events) override;
    void setTemplateImage(const QImage &image, QSize size) override;
    void setOpacity(double opacity) override;
    void fadeOpacity(double opacity, std::chrono::milliseconds duration) override;
    void setToolTip(const QString &text) override;
    void setVisible(bool visible) override;

    [[nodiscard]] bool isVisible() const override { return visible_; }

    [[nodiscard]] bool hasPlace() const override { return registration_.hasHost() || embedded_.isDocked(); }

    void setMenu(StatusMenu menu) override;
    [[nodiscard]] std::optional<QRect> anchor() const override;
    [[nodiscard]] bool contains(QPoint point) const override;

private:
    void connectHosts();
    void handleClick(QPoint nativeHint, std::function<void()> Events::*event);
    void chooseHost();
    void showIcon();
    void fadeStep();
    [[nodiscard]] QImage paint(int pixels, const std::optional<QColor> &ground) const;
    [[nodiscard]] std::optional<ScreenFrame> screenFrame(const QScreen *screen) const;
    [[nodiscard]] std::optional<QPoint> pointer() const;
    [[nodiscard]] std::optional<QRect> embeddedGeometry() const;
    [[nodiscard]] QRect anchorOfClick(QPoint nativeHint) const;
    // Whether the host says that it was activated while the pointer was elsewhere.
    [[nodiscard]] bool isKeyboardActivation(QPoint nativeHint) const;

    Dependencies dependencies_;
    QString id_;
    StatusNotifierItem item_;
    DBusMenu menu_;
    CallBudget budget_{&item_, &menu_};
    StatusNotifierRegistration registration_;
    XEmbedIcon embedded_;
    StatusItemTip tip_;
    Events events_;
    QImage template_;
    double opacity_ = 1;
    bool visible_ = true;
    bool hostKnown_ = false;
    std::vector<std::function<void()>> hostBecameKnown_;
    QElapsedTimer sinceRegistration_;
    std::optional<QRect> clickAnchor_;

    QTimer fade_;
    double fadeTarget_ = 1;
    int fadeStepsLeft_ = 0;
};
