#pragma once

#include <VelmoraPlatform/LoginItem.h>

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

// Start at login from inside a sandbox, which cannot write to the autostart folder: requested from the portal
// org.freedesktop.portal.Background.
//
// The portal may ask the user, so its response can take any time. Both operations return true as soon as the
// request is sent; a refusal, or a desktop without such a portal, is reported to the refusal handler.
class PortalLoginItem final : public QObject, public LoginItem {
    Q_OBJECT

public:
    // `command` is what the portal shall start; `reason` is the sentence it shows to the user.
    PortalLoginItem(QDBusConnection bus, QStringList command, QString reason);

    // False when there is no session bus.
    [[nodiscard]] bool registerItem() override;
    [[nodiscard]] bool unregisterItem() override;
    void setRefusalHandler(RefusalHandler handler) override;

private:
    Q_SLOT void responseReceived(uint response, const QVariantMap &results);
    [[nodiscard]] bool requestAutostart(bool autostart);
    void closeRequest();
    void reportRefusal();

    QDBusConnection bus_;
    QStringList command_;
    QString reason_;
    QString request_; // Object path of the pending request; responses to earlier ones are ignored.
    bool wanted_ = false;
    RefusalHandler refusal_;
};
