#pragma once

#include <QObject>
#include <QString>

class QLocalServer;

// A lock file that the kernel releases with its process, and a local socket over which a second start reaches
// the first. Both are in $XDG_RUNTIME_DIR, accessible to the user alone.
class LocalInstance : public QObject {
    Q_OBJECT

public:
    explicit LocalInstance(const QString &identifier);
    ~LocalInstance() override;

    // Whether this process is the first; if not, the first has been given `token` and asked to re-open.
    [[nodiscard]] bool claim(const QByteArray &token);

    Q_SIGNAL void reopened(const QByteArray &token);

private:
    [[nodiscard]] bool takeLock();
    void listen();
    void callFirst(const QByteArray &token) const;

    QString lockPath_;
    QString socketPath_;
    int lock_ = -1;
};
