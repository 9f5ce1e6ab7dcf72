#pragma once

#include <QDBusConnection>
#include <QObject>

// Offers an exported item to the desktop, again whenever the desktop's watcher starts or comes back.
class StatusNotifierRegistration : public QObject {
    Q_OBJECT

public:
    explicit StatusNotifierRegistration(QDBusConnection bus);

    void start();

    // Whether a host shows registered items; nothing is known before the first `hostChanged`.
    [[nodiscard]] bool hasHost() const { return hasHost_; }

    Q_SIGNAL void registered();
    Q_SIGNAL void hostChanged();

private:
    void registerItem();
    Q_SLOT void askForHost();
    void setHost(bool present);

    QDBusConnection bus_;
    bool hasHost_ = false;
};
