#include "HomeLock.h"

#include <VelmoraLinux/Defaults/PrivateFiles.h>

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto patience = 3s; // For a predecessor that is ending.
constexpr auto tryAgainAfter = 20ms;

// A lock of the process and not of the file's descriptor, which a forked process would share.
flock wholeFile()
{
    flock lock{};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

} // namespace

HomeLock::HomeLock(const QString &folder)
{
    if (!PrivateFiles::prepareFolder(folder))
        return;
    const QByteArray path = QFile::encodeName(folder + u"/lock"_s);
    file_ = FileDescriptor(
        ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
}

bool HomeLock::take(const QByteArray &note)
{
    if (!tryToLock())
        return false;
    write(note);
    return true;
}

bool HomeLock::takeFromPredecessor(const QByteArray &note)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!take(note)) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(tryAgainAfter);
    }
    return true;
}

bool HomeLock::tryToLock() const
{
    if (!file_.isOpen())
        return true; // The folder cannot be written to, so nobody's settings can be harmed.
    flock lock = wholeFile();
    const bool isHeld = ::fcntl(file_.get(), F_SETLK, &lock) != 0 && (errno == EACCES || errno == EAGAIN);
    return !isHeld;
}

void HomeLock::write(const QByteArray &note) const
{
    if (file_.isOpen() && ::ftruncate(file_.get(), 0) == 0) [[maybe_unused]]
        const auto written = ::pwrite(file_.get(), note.constData(), static_cast<size_t>(note.size()), 0);
}

QByteArray HomeLock::holder() const
{
    std::array<char, 256> note{};
    const auto length = file_.isOpen() ? ::pread(file_.get(), note.data(), note.size(), 0) : 0;
    flock lock = wholeFile();
    const bool isKnown =
        file_.isOpen() && ::fcntl(file_.get(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    QByteArray text = isKnown ? "process " + QByteArray::number(lock.l_pid) : QByteArray("another process");
    if (length > 0)
        text += ", " + QByteArray(note.data(), length);
    return text;
}
