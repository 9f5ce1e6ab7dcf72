#include "PrivateFiles.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
    return true;
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
