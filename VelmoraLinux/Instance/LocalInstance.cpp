#include "LocalInstance.h"

#include <VelmoraLinux/Process/ActionName.h>

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
constexpr qint64 maximumMessageBytes = 4096;
constexpr int mostCallers = 16; // At once.
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

ApplicationInstance::Role LocalInstance::claim(std::optional<ApplicationInstance::Action> request,
                                               const QByteArray &token)
{
    if (takeLock()) {
        listen();
        return ApplicationInstance::Role::first;
    }
    // The action's name in a line of its own, empty for none; then the token.
    const QByteArray name =
        request ? QByteArray::fromStdString(std::string(ActionName::of(*request))) : QByteArray();
    return callFirst(name + '\n' + token) ? ApplicationInstance::Role::second
                                          : ApplicationInstance::Role::unanswered;
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
        hear(server->nextPendingConnection());
        if (callers_.size() > mostCallers)
            turnAway(callers_.first());
    });
    server->listen(socketPath_);
}

void LocalInstance::hear(QLocalSocket *caller)
{
    callers_.append(caller);
    // Left unread, a long message would hide from us that its sender has gone, and keep its place for good.
    connect(caller, &QLocalSocket::readyRead, this, [this, caller] {
        if (caller->bytesAvailable() > maximumMessageBytes)
            turnAway(caller);
    });
    connect(caller, &QLocalSocket::disconnected, this, [this, caller] {
        callers_.removeOne(caller);
        caller->deleteLater();
        receive(caller->readAll());
    });
}

void LocalInstance::turnAway(QLocalSocket *caller)
{
    callers_.removeOne(caller);
    caller->disconnect(this);
    caller->abort();
    caller->deleteLater();
}

void LocalInstance::receive(const QByteArray &message)
{
    const auto end = message.indexOf('\n');
    const QByteArray token = message.mid(end + 1);
    if (const auto action = ActionName::parse(message.left(std::max<qsizetype>(end, 0)).toStdString()))
        Q_EMIT actionChosen(*action, token);
    else
        Q_EMIT reopened(token);
}

bool LocalInstance::callFirst(const QByteArray &message) const
{
    QLocalSocket socket;
    socket.connectToServer(socketPath_);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(message);
    socket.disconnectFromServer();
    return socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected(timeoutMs);
}
