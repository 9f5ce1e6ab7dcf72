#include "Replacement.h"

#include "ArchiveUnpacker.h"

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

// In the hidden folder: what is still being written, and a complete version.
constexpr auto unfinishedFolder = "unfinished";
constexpr auto otherFolder = "other";

UpdateProblem problemOfErrno()
{
    return errno == ENOSPC || errno == EDQUOT || errno == EFBIG ? UpdateProblem::noSpace
                                                                : UpdateProblem::notReplaced;
}

QJsonObject information(const FolderHandle &root)
{
    constexpr qsizetype limit = qsizetype{1} * 1024 * 1024;
    return QJsonDocument::fromJson(root.read("share/velmora/Info.json", limit)).object();
}

// An image has no readable inside: which version it is, it reports itself when it has started.
UpdateOutcome writeImage(VerifiedArchive &archive, const FolderHandle &folder)
{
    constexpr qint64 piece = 1 << 20;
    QFile &source = archive.file();
    errno = 0;
    const Descriptor image = folder.makeFile(unfinishedFolder, 0755);
    if (!image.isOpen() || !source.seek(0))
        return problemOfErrno();
    while (!source.atEnd()) {
        const QByteArray bytes = source.read(piece);
        if (bytes.isEmpty() ||
            write(image.number(), bytes.constData(), static_cast<size_t>(bytes.size())) != bytes.size())
            return problemOfErrno();
    }
    return fsync(image.number()) == 0 ? UpdateOutcome() : problemOfErrno();
}

} // namespace

Replacement::Replacement(Installation installation)
    : installation_(std::move(installation))
{
    const QFileInfo target(installation_.target);
    parent_ = target.absolutePath();
    target_ = QFile::encodeName(target.fileName());
    hidden_ = '.' + target_ + ".update";
}

// The hidden folder, if it can be trusted: another user may have made one, or a link, in its place.
FolderHandle Replacement::hiddenFolder() const
{
    FolderHandle hidden = FolderHandle::open(parent_).folder(hidden_);
    return hidden.isPrivate() ? std::move(hidden) : FolderHandle();
}

UpdateOutcome Replacement::prepare(VerifiedArchive &archive, const QString &version) const
{
    cleanUp();
    if (!FolderHandle::open(parent_).makeFolder(hidden_, S_IRWXU))
        return problemOfErrno();
    const FolderHandle hidden = hiddenFolder();
    if (!hidden.isOpen())
        return UpdateProblem::notReplaced;
    UpdateOutcome problem = installation_.kind == Installation::Kind::folder
                                ? prepareFolder(archive, version, hidden)
                                : writeImage(archive, hidden);
    if (!problem && (renameat(hidden.descriptor(), unfinishedFolder, hidden.descriptor(), otherFolder) != 0 ||
                     !hidden.sync()))
        problem = problemOfErrno();
    if (problem)
        cleanUp();
    return problem;
}

UpdateOutcome Replacement::prepareFolder(VerifiedArchive &archive, const QString &version,
                                         const FolderHandle &hidden) const
{
    const FolderHandle installed = FolderHandle::open(installation_.target);
    // Files may have been added since the start: what is exchanged and removed later must be ours.
    if (!InstalledFiles(installed).foreignFile().isEmpty())
        return UpdateProblem::foreignFile;
    if (!InstalledFiles(installed).areComplete())
        return UpdateProblem::notReplaced;
    if (!hidden.makeFolder(unfinishedFolder, 0755))
        return problemOfErrno();
    const FolderHandle unpacked = hidden.folder(unfinishedFolder);
    const UpdateOutcome problem = ArchiveUnpacker({}).unpack(archive, unpacked);
    if (problem)
        return problem;
    // A signature proves that an archive is ours, not that it is the announced one.
    const QJsonObject now = information(installed);
    const QJsonObject then = information(unpacked);
    const bool isAnnounced = then[u"CFBundleVersion"] == QJsonValue(version) &&
                             then[u"CFBundleIdentifier"] == now[u"CFBundleIdentifier"];
    const QString launcher = installation_.launcher.mid(installation_.target.size() + 1);
    if (!isAnnounced || !unpacked.isProgram(QFile::encodeName(launcher)) ||
        !InstalledFiles(unpacked).areComplete())
        return UpdateProblem::contents;
    return {};
}

bool Exchange::run() const
{
    return renameat2(hidden(), otherFolder, parent(), target_.constData(), RENAME_EXCHANGE) == 0;
}

Exchange Replacement::preparedExchange() const
{
    return {FolderHandle::open(parent_), hiddenFolder(), target_};
}

UpdateOutcome Replacement::exchange() const
{
    const Exchange exchange = preparedExchange();
    if (!exchange.isOpen() || !exchange.run())
        return problemOfErrno();
    (void)fsync(
        exchange.parent()); // The exchange is done; a power cut may undo it, which leaves the old version.
    return {};
}

void Replacement::cleanUp() const
{
    const FolderHandle hidden = hiddenFolder();
    if (!hidden.isOpen())
        return;
    if (const FolderHandle other = hidden.folder(otherFolder); other.isOpen())
        InstalledFiles(other).remove();
    else
        hidden.removeFile(otherFolder);
    hidden.removeEmptyFolders(otherFolder);
    hidden.removeTree(unfinishedFolder); // Written by us, in a folder that only we can enter.
    FolderHandle::open(parent_).removeEmptyFolders(hidden_);
}
