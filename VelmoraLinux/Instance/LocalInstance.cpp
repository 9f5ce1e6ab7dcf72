#include "LocalInstance.h"

#include <VelmoraLinux/Process/ActionName.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/file.h>

#include <chrono>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
constexpr auto patience = 3s; // For a first instance that is busy.
constexpr auto tryAgainAfter = 20ms;
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

LocalInstance::~LocalInstance() = default;

// A first instance that is starting has the lock a moment before it can be called, and one that is ending a moment
// longer.
ApplicationInstance::Role LocalInstance::claim(std::optional<ApplicationInstance::Action> request,
                                               const QByteArray &token)
{
    // The action's name in a line of its own, empty for none; then the token.
    const QByteArray name =
        request ? QByteArray::fromStdString(std::string(ActionName::of(*request))) : QByteArray();
    const QDeadlineTimer deadline(patience);
    while (!takeLock()) {
        if (callFirst(name + '\n' + token, deadline))
            return ApplicationInstance::Role::second;
        if (deadline.hasExpired())
            return ApplicationInstance::Role::unanswered;
        std::this_thread::sleep_for(tryAgainAfter);
    }
    listen();
    return ApplicationInstance::Role::first;
}

bool LocalInstance::takeLock()
{
    FileDescriptor lock(
        ::open(QFile::encodeName(lockPath_).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
    // Without a lock file another instance cannot be found.
    if (lock.isOpen() && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return false;
    lock_ = std::move(lock);
    return true;
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

bool LocalInstance::callFirst(const QByteArray &message, const QDeadlineTimer &deadline) const
{
    const auto left = [&deadline] { return static_cast<int>(deadline.remainingTime()); };
    QLocalSocket socket;
    socket.connectToServer(socketPath_);
    if (!socket.waitForConnected(left()))
        return false;
    socket.write(message);
    socket.disconnectFromServer();
    return socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected(left());
}
