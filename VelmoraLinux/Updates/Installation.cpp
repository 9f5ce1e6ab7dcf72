#include "Installation.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr auto manifestPath = "share/velmora/manifest";

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

// The paths of all files below `folder`.
QByteArrayList filesIn(const FolderHandle &folder, const QByteArray &prefix = {})
{
    QByteArrayList result;
    for (const auto &[name, isFolder] : folder.entries()) {
        if (isFolder)
            result += filesIn(folder.folder(name), prefix + name + '/');
        else
            result += prefix + name;
    }
    return result;
}

// The first folder on the way to `folder` where another user can replace what an update writes: one that is
// not this user's or root's, or that a group or everybody can write to. In folders with the sticky bit, such
// as /tmp, others can only add files; that is safe above `folder`, but not for `folder` itself. Empty when
// there is none.
QString sharedFolder(const QString &folder)
{
    QString path = folder;
    for (bool isFirst = true;; isFirst = false) {
        struct stat status = {};
        if (stat(QFile::encodeName(path).constData(), &status) != 0)
            return path;
        const bool isWidelyWritable = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
        const bool isSticky = (status.st_mode & S_ISVTX) != 0;
        if ((status.st_uid != geteuid() && status.st_uid != 0) ||
            (isWidelyWritable && (isFirst || !isSticky)))
            return path;
        const QString above = QFileInfo(path).absolutePath();
        if (above == path)
            return {};
        path = above;
    }
}

Installation managedBy(const QString &manager, const QString &launcher)
{
    return {.kind = Installation::Kind::managed, .target = {}, .launcher = launcher, .manager = manager};
}

Installation managedBecause(UpdateProblem problem, const QString &place, const QString &launcher)
{
    return {.kind = Installation::Kind::managed,
            .target = {},
            .launcher = launcher,
            .manager = QFileInfo(launcher).absolutePath(),
            .problem = problem,
            .place = place};
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
        return managedBy(u"Flatpak"_s, program);
    if (const QString image = runningAppImage(program, environment); !image.isEmpty())
        return detectImage(image);
    const QString root = QFileInfo(QFileInfo(program).absolutePath() + u"/.."_s).canonicalFilePath();
    const QString parent = QFileInfo(root).absolutePath();
    const FolderHandle folder = FolderHandle::open(root);
    const InstalledFiles files(folder);
    if (root.isEmpty() || parent == root || !isWritable(root) || !isWritable(parent) || !files.isListed())
        return managedBy(packageManagerOf(program), program);
    if (const QString foreign = files.foreignFile(); !foreign.isEmpty())
        return managedBecause(UpdateProblem::foreignFile, root + u'/' + foreign, program);
    for (const QString &place : {root, parent}) {
        if (const QString shared = sharedFolder(place); !shared.isEmpty())
            return managedBecause(UpdateProblem::sharedFolder, shared, program);
    }
    if (!files.areComplete())
        return managedBy(packageManagerOf(program), program);
    return {.kind = Kind::folder, .target = root, .launcher = program, .manager = {}};
}

Installation Installation::detectImage(const QString &image)
{
    const QString folder = QFileInfo(image).absolutePath();
    if (!isWritable(image) || !isWritable(folder))
        return managedBy(image, image);
    if (const QString shared = sharedFolder(QFileInfo(folder).canonicalFilePath()); !shared.isEmpty())
        return managedBecause(UpdateProblem::sharedFolder, shared, image);
    return {.kind = Kind::appImage, .target = image, .launcher = image, .manager = {}};
}

QStringList Installation::archiveTypes() const
{
    switch (kind) {
    case Kind::appImage:
        return {u"application/vnd.appimage"_s};
    case Kind::folder:
        return {u"application/x-xz"_s, u"application/gzip"_s};
    case Kind::managed:
        break;
    }
    return {};
}

QByteArrayList InstalledFiles::listed() const
{
    constexpr qsizetype limit = qsizetype{4} * 1024 * 1024;
    QByteArrayList names = root_.read(manifestPath, limit).split('\n');
    names.removeAll({});
    const bool isPlain = std::none_of(names.begin(), names.end(), [](const QByteArray &name) {
        return name.startsWith('/') || name.split('/').contains("..");
    });
    return isPlain ? names : QByteArrayList();
}

bool InstalledFiles::isListed() const
{
    return !listed().isEmpty();
}

bool InstalledFiles::areComplete() const
{
    QByteArrayList names = listed();
    std::sort(names.begin(), names.end());
    QByteArrayList files = filesIn(root_);
    std::sort(files.begin(), files.end());
    return !names.isEmpty() && names == files;
}

QString InstalledFiles::foreignFile() const
{
    const QByteArrayList names = listed();
    for (const QByteArray &file : filesIn(root_)) {
        if (!names.contains(file))
            return QFile::decodeName(file);
    }
    return {};
}

void InstalledFiles::remove() const
{
    QByteArrayList names = listed();
    if (names.removeOne(manifestPath))
        names.append(manifestPath); // Last, so that an interrupted removal can be continued.
    for (const QByteArray &name : std::as_const(names))
        root_.removeFile(name);
}
