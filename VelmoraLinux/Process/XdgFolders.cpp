#include "XdgFolders.h"

#include <QDir>
#include <QFile>

#include <pwd.h>
#include <unistd.h>

namespace {

// Nothing unless `path` is absolute and its name survives the conversion to a QString and back.
QString usable(const QByteArray &path)
{
    const QString result = QFile::decodeName(path);
    return QDir::isAbsolutePath(result) && QFile::encodeName(result) == path ? QDir::cleanPath(result)
                                                                             : QString();
}

// $HOME, or what the user database says. Without either a path below which nothing can be created, so that
// nothing is written to a folder that belongs to nobody.
QString homeFolder()
{
    if (QString home = usable(qgetenv("HOME")); !home.isEmpty())
        return home;
    const passwd *user = getpwuid(getuid());
    const QString home = user == nullptr ? QString() : usable(user->pw_dir);
    return home.isEmpty() ? QStringLiteral("/dev/null") : home;
}

QString baseFolder(const char *variable, QStringView belowHome)
{
    const QString folder = usable(qgetenv(variable));
    return folder.isEmpty() ? homeFolder() + belowHome.toString() : folder;
}

} // namespace

QString XdgFolders::dataHome()
{
    return baseFolder("XDG_DATA_HOME", u"/.local/share");
}

QString XdgFolders::configHome()
{
    return baseFolder("XDG_CONFIG_HOME", u"/.config");
}

QString XdgFolders::cacheHome()
{
    return baseFolder("XDG_CACHE_HOME", u"/.cache");
}
