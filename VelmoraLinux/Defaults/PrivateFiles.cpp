#include "PrivateFiles.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace {

constexpr mode_t groupAndOthers = S_IRWXG | S_IRWXO;

void restrictTo(const QString &path, mode_t rights)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (stat(name.constData(), &status) == 0 && (status.st_mode & groupAndOthers) != 0)
        (void)chmod(name.constData(),
                    rights); // Fails for another user's file and on a read-only disk: nothing to do then.
}

bool makeFolder(const QString &folder)
{
    const QString above = QDir::cleanPath(folder + u"/.."_s);
    if (!QDir(above).exists() && above != folder && !makeFolder(above))
        return false;
    return mkdir(QFile::encodeName(folder).constData(), S_IRWXU) == 0 || QDir(folder).exists();
}

} // namespace

bool PrivateFiles::prepareFolder(const QString &folder)
{
    if (!makeFolder(folder))
        return false;
    restrictTo(folder, S_IRWXU);
    struct stat status = {};
    return stat(QFile::encodeName(folder).constData(), &status) == 0 &&
           (status.st_uid == geteuid() || (status.st_mode & groupAndOthers) == 0);
}

bool PrivateFiles::prepareFile(const QString &path)
{
    const int file = open(QFile::encodeName(path).constData(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK,
                          S_IRUSR | S_IWUSR);
    if (file < 0)
        return QFile::exists(path);
    close(file);
    return true;
}

void PrivateFiles::restrictFile(const QString &path)
{
    restrictTo(path, S_IRUSR | S_IWUSR);
}

bool PrivateFiles::isRegularOrMissing(const QString &path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) == 0)
        return S_ISREG(status.st_mode);
    return errno == ENOENT || errno == EACCES;
}

void PrivateFiles::eraseFile(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const int file = open(name.constData(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat status = {};
    if (file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
        const QByteArray zeros(1 << 16, '\0');
        for (off_t left = status.st_size; left > 0;) {
            const ssize_t written =
                write(file, zeros.constData(), static_cast<size_t>(std::min<off_t>(left, zeros.size())));
            if (written <= 0)
                break;
            left -= written;
        }
        (void)fdatasync(file);
    }
    if (file >= 0)
        close(file);
    (void)unlink(name.constData());
}
