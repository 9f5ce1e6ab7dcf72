#include "XdgFolders.h"

#include <QDir>
#include <QFile>

namespace {

QString baseFolder(const char *variable, QStringView belowHome)
{
    const QString folder = QFile::decodeName(qgetenv(variable));
    return QDir::isAbsolutePath(folder) ? QDir::cleanPath(folder) : QDir::homePath() + belowHome.toString();
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
