#pragma once

#include <VelmoraLinux/Process/FileDescriptor.h>
#include <VelmoraPlatform/ApplicationInstance.h>

#include <QList>
#include <QObject>
#include <QString>

#include <optional>

class QDeadlineTimer;
class QLocalSocket;

// A lock file that the kernel releases with its process, and a local socket over which a second start reaches
// the first. Both are in $XDG_RUNTIME_DIR, accessible to the user alone.
class LocalInstance : public QObject {
    Q_OBJECT

public:
    explicit LocalInstance(const QString &identifier);
    ~LocalInstance() override;

    // When this process is not the first, the first is given `token` and asked for `request`, or to re-open. Waits some
    // seconds for one that holds the lock and cannot be called.
    [[nodiscard]] ApplicationInstance::Role claim(std::optional<ApplicationInstance::Action> request,
                                                  const QByteArray &token);

    Q_SIGNAL void reopened(const QByteArray &token);
    Q_SIGNAL void actionChosen(ApplicationInstance::Action action, const QByteArray &token);

private:
    [[nodiscard]] bool takeLock();
    void listen();
    void hear(QLocalSocket *caller);
    void turnAway(QLocalSocket *caller);
    void receive(const QByteArray &message);
    [[nodiscard]] bool callFirst(const QByteArray &message, const QDeadlineTimer &deadline) const;

    QString lockPath_;
    QString socketPath_;
    FileDescriptor lock_;
    QList<QLocalSocket *> callers_; // The one that has stayed longest first.
};
