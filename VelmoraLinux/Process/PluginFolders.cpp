#include "PluginFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>

QStringList pluginFolders(const QString &programFolder)
{
    const QDir programs(programFolder);
    const QString configuration = programs.filePath(QStringLiteral("qt.conf"));
    if (!QFile::exists(configuration))
        return QCoreApplication::libraryPaths();
    const QSettings paths(configuration, QSettings::IniFormat);
    const QDir prefix(
        programs.filePath(paths.value(QStringLiteral("Paths/Prefix"), QStringLiteral(".")).toString()));
    const QString plugins =
        paths.value(QStringLiteral("Paths/Plugins"), QStringLiteral("plugins")).toString();
    return {QDir::cleanPath(prefix.filePath(plugins))};
}
