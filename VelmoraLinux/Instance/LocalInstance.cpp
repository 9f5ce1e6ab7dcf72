#include "LocalInstance.h"

#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int timeoutMs = 3000; // For a first instance that is busy.
constexpr qint64 maximumTokenBytes = 4096;
} // namespace

LocalInstance::LocalInstance(const QString &identifier)
{
    // Qt checks owner and permissions of this folder, and uses another one when the session has none.
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation));
    lockPath_ = folder.filePath(identifier + u".lock"_s);
    socketPath_ = folder.filePath(identifier + u".socket"_s);
}

LocalInstance::~LocalInstance()
{
    if (lock_ >= 0)
        ::close(lock_);
}

bool LocalInstance::claim(const QByteArray &token)
{
    if (takeLock()) {
        listen();
        return true;
    }
    callFirst(token);
    return false;
}

bool LocalInstance::takeLock()
{
    lock_ = ::open(QFile::encodeName(lockPath_).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    // Without a lock file another instance cannot be found.
    return lock_ < 0 || ::flock(lock_, LOCK_EX | LOCK_NB) == 0;
}

void LocalInstance::listen()
{
    QLocalServer::removeServer(socketPath_); // We hold the lock, so an existing socket is left over.
    auto *server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(server, &QLocalServer::newConnection, this, [this, server] {
        QLocalSocket *caller = server->nextPendingConnection();
        connect(caller, &QLocalSocket::disconnected, this, [this, caller] {
            caller->deleteLater();
            Q_EMIT reopened(caller->read(maximumTokenBytes));
        });
    });
    server->listen(socketPath_);
}

void LocalInstance::callFirst(const QByteArray &token) const
{
    QLocalSocket socket;
    socket.connectToServer(socketPath_);
    if (!socket.waitForConnected(timeoutMs))
        return;
    socket.write(token);
    socket.disconnectFromServer();
    if (socket.state() != QLocalSocket::UnconnectedState)
        socket.waitForDisconnected(timeoutMs);
}
