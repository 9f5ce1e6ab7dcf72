#pragma once

#include <VelmoraLinux/Windows/ActivationToken.h>
#include <VelmoraPlatform/ApplicationInstance.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QObject>

#include <memory>

class LocalInstance;

// One instance per session: by the application's own name on the session bus, where a second start also
// arrives as an activation; without a bus by a lock and a socket that only the user can reach.
class LinuxApplicationInstance : public QObject, public ApplicationInstance {
    Q_OBJECT

public:
    // `identifier` is the bus name, such as org.example.Program. `token` receives what activations carry.
    LinuxApplicationInstance(QDBusConnection bus, QString identifier, ActivationToken &token);
    ~LinuxApplicationInstance() override;

    [[nodiscard]] Role claim() override;
    // As `claim`, when the first instance is known to be ending: what it still holds is waited for, and it is
    // not asked to re-open.
    [[nodiscard]] Role inherit();
    void setReopenHandler(ReopenHandler handler) override;

private:
    [[nodiscard]] Role claimLocally();
    [[nodiscard]] Role claimOnBus(QDBusConnectionInterface::ServiceQueueOptions queue);
    void activateFirst();

    QDBusConnection bus_;
    bool startedByBus_; // The first call then is the launch itself, not a second one.
    QString identifier_;
    ActivationToken &token_;
    std::unique_ptr<LocalInstance> local_;
    ReopenHandler reopen_;
};
