#include "Replacement.h"

#include "ArchiveUnpacker.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// In the hidden place: what is still being written, and what is complete.
constexpr QStringView unfinishedFolder = u"unfinished";
constexpr QStringView otherFolder = u"other";

UpdateProblem problemOfErrno()
{
    return errno == ENOSPC || errno == EDQUOT || errno == EFBIG ? UpdateProblem::noSpace
                                                                : UpdateProblem::notReplaced;
}

bool renameAtomically(const QString &from, const QString &to, unsigned flags)
{
    return renameat2(AT_FDCWD, QFile::encodeName(from).constData(), AT_FDCWD,
                     QFile::encodeName(to).constData(), flags) == 0;
}

bool sync(const QString &folder)
{
    const int descriptor = open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool written = descriptor >= 0 && fsync(descriptor) == 0;
    if (descriptor >= 0)
        close(descriptor);
    return written;
}

QJsonObject information(const QString &root)
{
    QFile file(root + u"/share/velmora/Info.json"_s);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

} // namespace

Replacement::Replacement(Installation installation)
    : installation_(std::move(installation))
{
    const QFileInfo target(installation_.target);
    hidden_ = target.absolutePath() + u"/."_s + target.fileName() + u".update"_s;
}

QString Replacement::place(QStringView name) const
{
    return hidden_ + u'/' + name.toString();
}

UpdateOutcome Replacement::prepare(VerifiedArchive &archive, const QString &version) const
{
    cleanUp();
    if (mkdir(QFile::encodeName(hidden_).constData(), S_IRWXU) != 0)
        return problemOfErrno();
    UpdateOutcome problem = installation_.kind == Installation::Kind::folder ? prepareFolder(archive, version)
                                                                             : prepareImage(archive);
    if (!problem && (!renameAtomically(place(unfinishedFolder), place(otherFolder), 0) || !sync(hidden_)))
        problem = problemOfErrno();
    if (problem)
        cleanUp();
    return problem;
}

UpdateOutcome Replacement::prepareFolder(VerifiedArchive &archive, const QString &version) const
{
    // Files that came after the start: what is moved aside with the old version must be ours to remove.
    if (!InstalledFiles(installation_.target).areComplete())
        return UpdateProblem::notReplaced;
    const QString unpacked = place(unfinishedFolder);
    if (const auto problem = ArchiveUnpacker({}).unpack(archive, unpacked))
        return problem;
    // A signature says that an archive is ours, not that it is the one that was announced.
    const QJsonObject now = information(installation_.target);
    const QJsonObject then = information(unpacked);
    const bool isAnnounced = then[u"CFBundleVersion"] == QJsonValue(version) &&
                             then[u"CFBundleIdentifier"] == now[u"CFBundleIdentifier"];
    const QString launcher = unpacked + installation_.launcher.mid(installation_.target.size());
    if (!isAnnounced || !QFileInfo(launcher).isExecutable() || !InstalledFiles(unpacked).areComplete())
        return UpdateProblem::contents;
    return {};
}

// An image has no readable inside: which version it is, it says itself when it has started.
UpdateOutcome Replacement::prepareImage(VerifiedArchive &archive) const
{
    constexpr qint64 piece = 1 << 20;
    constexpr QFile::Permissions mode = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                        QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther |
                                        QFile::ExeOther;
    QFile image(place(unfinishedFolder));
    QFile &source = archive.file();
    errno = 0;
    if (!source.seek(0) ||
        !image.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered, mode))
        return problemOfErrno();
    while (!source.atEnd()) {
        const QByteArray bytes = source.read(piece);
        if (bytes.isEmpty() || image.write(bytes) != bytes.size())
            return problemOfErrno();
    }
    if (image.size() != source.size() || !image.setPermissions(mode) || fsync(image.handle()) != 0)
        return problemOfErrno();
    return {};
}

UpdateOutcome Replacement::exchange() const
{
    // Not every file system can: then the installed version stays and the user is told.
    if (!renameAtomically(place(otherFolder), installation_.target, RENAME_EXCHANGE))
        return problemOfErrno();
    sync(QFileInfo(installation_.target).absolutePath());
    return {};
}

void Replacement::cleanUp() const
{
    if (!QFileInfo::exists(hidden_))
        return;
    const QFileInfo other(place(otherFolder));
    if (other.isDir())
        InstalledFiles(other.filePath()).remove();
    else
        QFile::remove(other.filePath());
    // Everything in the unfinished one was written by us, into a folder that only we can enter.
    QDir(place(unfinishedFolder)).removeRecursively();
    QFile::remove(place(unfinishedFolder));
    QDir().rmdir(hidden_);
}
