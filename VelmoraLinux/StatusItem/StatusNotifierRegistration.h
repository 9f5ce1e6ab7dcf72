#pragma once

#include <QDBusConnection>
#include <QObject>

// Registers an exported item with the StatusNotifierWatcher, again whenever the watcher starts or restarts.
class StatusNotifierRegistration : public QObject {
    Q_OBJECT

public:
    explicit StatusNotifierRegistration(QDBusConnection bus);

    void start();

    // Whether a host shows registered items; not meaningful before the first `hostChanged`.
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
