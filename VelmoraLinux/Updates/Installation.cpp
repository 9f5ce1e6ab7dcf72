#include "Installation.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <unistd.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView manifestPath = u"share/velmora/manifest";

bool isWritable(const QString &path)
{
    return access(QFile::encodeName(path).constData(), W_OK) == 0;
}

bool isInside(const QString &path, const QString &folder)
{
    const QString root = QFileInfo(folder).canonicalFilePath();
    return !root.isEmpty() && QFileInfo(path).canonicalFilePath().startsWith(root + u'/');
}

QString packageManagerOf(const QString &program)
{
    if (QFile::exists(u"/var/lib/dpkg/info/velmora.list"_s) && program.startsWith(u"/usr/"))
        return u"apt (dpkg)"_s;
    return QFileInfo(program).absolutePath();
}

void removeEmptyFolders(const QString &root)
{
    QStringList folders{root};
    QDirIterator all(root, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot,
                     QDirIterator::Subdirectories);
    while (all.hasNext())
        folders.append(all.next());
    // A folder's path is longer than that of the one around it.
    std::sort(folders.begin(), folders.end(),
              [](const QString &a, const QString &b) { return a.size() > b.size(); });
    for (const QString &folder : std::as_const(folders))
        QDir().rmdir(folder);
}

} // namespace

QString runningAppImage(const QString &program, const QProcessEnvironment &environment)
{
    const QString image = environment.value(u"APPIMAGE"_s);
    const bool isOurs = QFileInfo(image).isFile() && isInside(program, environment.value(u"APPDIR"_s));
    return isOurs ? QFileInfo(image).absoluteFilePath() : QString();
}

Installation Installation::detect(const QString &program, const QProcessEnvironment &environment)
{
    if (QFile::exists(u"/.flatpak-info"_s) || environment.contains(u"FLATPAK_ID"_s))
        return {.kind = Kind::managed, .target = {}, .launcher = program, .manager = u"Flatpak"_s};
    if (const QString image = runningAppImage(program, environment); !image.isEmpty()) {
        if (isWritable(image) && isWritable(QFileInfo(image).absolutePath()))
            return {.kind = Kind::appImage, .target = image, .launcher = image, .manager = {}};
        return {.kind = Kind::managed, .target = {}, .launcher = image, .manager = image};
    }
    const QString root = QFileInfo(QFileInfo(program).absolutePath() + u"/.."_s).canonicalFilePath();
    const QString parent = QFileInfo(root).absolutePath();
    if (!root.isEmpty() && parent != root && isWritable(root) && isWritable(parent) &&
        InstalledFiles(root).areComplete())
        return {.kind = Kind::folder, .target = root, .launcher = program, .manager = {}};
    return {.kind = Kind::managed, .target = {}, .launcher = program, .manager = packageManagerOf(program)};
}

QString Installation::archiveType() const
{
    switch (kind) {
    case Kind::appImage:
        return u"application/vnd.appimage"_s;
    case Kind::folder:
        return u"application/gzip"_s;
    case Kind::managed:
        break;
    }
    return {};
}

QStringList InstalledFiles::listed() const
{
    QFile manifest(root_ + u'/' + manifestPath.toString());
    if (!manifest.open(QIODevice::ReadOnly))
        return {};
    QStringList result = QString::fromUtf8(manifest.readAll()).split(u'\n', Qt::SkipEmptyParts);
    const bool plain = std::none_of(result.begin(), result.end(), [](const QString &name) {
        return name.startsWith(u'/') || name.split(u'/').contains(u".."_s);
    });
    return plain ? result : QStringList();
}

bool InstalledFiles::areComplete() const
{
    const QStringList names = listed();
    QSet<QString> missing(names.begin(), names.end());
    if (missing.isEmpty())
        return false;
    QDirIterator files(root_, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        const bool isFolder = files.fileInfo().isDir() && !files.fileInfo().isSymLink();
        if (!isFolder && !missing.remove(files.filePath().mid(root_.size() + 1)))
            return false;
    }
    return missing.isEmpty();
}

bool InstalledFiles::remove() const
{
    QStringList names = listed();
    if (names.removeOne(manifestPath.toString()))
        names.append(manifestPath.toString()); // Last, so that an interrupted removal can be taken up again.
    for (const QString &name : std::as_const(names))
        QFile::remove(root_ + u'/' + name);
    removeEmptyFolders(root_);
    return !QFileInfo::exists(root_);
}
