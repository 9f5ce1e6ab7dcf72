#pragma once

#include <VelmoraLinux/Bus/CallBudget.h>
#include <VelmoraLinux/Windows/ActivationToken.h>
#include <VelmoraPlatform/ApplicationInstance.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QObject>

#include <memory>
#include <optional>

class LocalInstance;

// One instance per session. With a session bus, the first process owns the application's bus name and a second start
// activates it; without a bus, a lock file and a local socket that only the user can open do the same.
class LinuxApplicationInstance : public QObject, public ApplicationInstance {
    Q_OBJECT

public:
    // `identifier` is the bus name, such as org.example.Program. `token` receives the activation tokens.
    LinuxApplicationInstance(QDBusConnection bus, QString identifier, ActivationToken &token);
    ~LinuxApplicationInstance() override;

    [[nodiscard]] Role claim() override;
    // As `claim`, when the first instance is known to be ending: queues for its bus name, and does not
    // ask it to re-open.
    [[nodiscard]] Role claimWhenReleased();
    void setReopenHandler(ReopenHandler handler) override;
    void setActionHandler(ActionHandler handler) override;

    // What the first instance is asked for when this is the second, instead of re-opening it.
    void setRequest(Action action) { request_ = action; }

private:
    [[nodiscard]] Role claimLocally();
    [[nodiscard]] Role claimOnBus(QDBusConnectionInterface::ServiceQueueOptions queue);
    [[nodiscard]] bool callFirst();
    void act(Action action, const QByteArray &token);

    QDBusConnection bus_;
    bool startedByBus_; // D-Bus activation: the first call is the launch itself, not a second start.
    QString identifier_;
    ActivationToken &token_;
    std::optional<CallBudget> budget_; // Of what is registered on the bus.
    std::unique_ptr<LocalInstance> local_;
    std::optional<Action> request_;
    ReopenHandler reopen_;
    ActionHandler act_;
};
