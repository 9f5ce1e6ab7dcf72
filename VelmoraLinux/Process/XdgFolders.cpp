#include "XdgFolders.h"

#include <QDir>
#include <QFile>

namespace {

QString absoluteFolder(const char *variable)
{
    const QString folder = QFile::decodeName(qgetenv(variable));
    return QDir::isAbsolutePath(folder) ? QDir::cleanPath(folder) : QString();
}

QString absoluteFolder(const char *variable, QStringView belowHome)
{
    const QString folder = absoluteFolder(variable);
    return folder.isEmpty() ? QDir::homePath() + belowHome.toString() : folder;
}

} // namespace

QString XdgFolders::dataHome()
{
    return absoluteFolder("XDG_DATA_HOME", u"/.local/share");
}

QString XdgFolders::configHome()
{
    return absoluteFolder("XDG_CONFIG_HOME", u"/.config");
}

QString XdgFolders::cacheHome()
{
    return absoluteFolder("XDG_CACHE_HOME", u"/.cache");
}

QString XdgFolders::runtimeFolder()
{
    return absoluteFolder("XDG_RUNTIME_DIR");
}
