#pragma once

#include <VelmoraPlatform/LoginItem.h>

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

// Start at login from inside a sandbox, which cannot write to the autostart folder: the desktop's portal is
// asked.
//
// The portal may put the question to the user, so its answer takes any time. Both members say yes as soon as
// the question is on its way; a refusal, or a desktop without such a portal, reaches the refusal handler.
class PortalLoginItem final : public QObject, public LoginItem {
    Q_OBJECT

public:
    // `command` is what the portal is to start.
    PortalLoginItem(QDBusConnection bus, QStringList command, QString reason);

    // False when there is no bus to ask on.
    [[nodiscard]] bool registerItem() override;
    [[nodiscard]] bool unregisterItem() override;
    void setRefusalHandler(RefusalHandler handler) override;

private:
    Q_SLOT void answered(uint response, const QVariantMap &results);
    [[nodiscard]] bool ask(bool autostart);
    void stopListening();
    void refused();

    QDBusConnection bus_;
    QStringList command_;
    QString reason_;
    QString request_; // The object of the question that is open; an answer to an earlier one is not heard.
    bool wanted_ = false;
    RefusalHandler refusal_;
};
