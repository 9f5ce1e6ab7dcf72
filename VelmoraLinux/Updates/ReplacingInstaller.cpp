#include "ReplacingInstaller.h"

#include "HandoverWatch.h"

#include <QDir>
#include <QUuid>

#include <sys/stat.h>
#include <unistd.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// The folder for downloads, which nobody else can enter. Not open when another user could have made it.
FolderHandle downloadFolder(const QString &path)
{
    if (!QDir().mkpath(QFileInfo(path).path()))
        return {};
    (void)mkdir(QFile::encodeName(path).constData(), S_IRWXU);
    FolderHandle folder = FolderHandle::open(path);
    struct stat status = {};
    const bool isOurs = fstat(folder.descriptor(), &status) == 0 && status.st_uid == geteuid() &&
                        fchmod(folder.descriptor(), S_IRWXU) == 0;
    return isOurs ? std::move(folder) : FolderHandle();
}

// Removes downloads that a killed process left, or that are not needed any more.
void removeDownloads(const FolderHandle &folder)
{
    for (const auto &[name, isFolder] : folder.entries()) {
        if (!isFolder && name.endsWith(".archive"))
            folder.removeFile(name);
    }
}

UpdateOutcome verifyAndPrepare(const DownloadedUpdate &update, const UpdateKey &key,
                               const Replacement &replacement)
{
    auto archive = VerifiedArchive::open(update.path, update.length, update.signature, key);
    return archive ? replacement.prepare(*archive, update.version) : UpdateProblem::badSignature;
}

} // namespace

ReplacingInstaller::ReplacingInstaller(Installation installation, UpdateKey key, QString folder,
                                       Scheduler &scheduler)
    : installation_(std::move(installation))
    , replacement_(installation_)
    , key_(std::move(key))
    , folder_(std::move(folder))
    , handover_(scheduler)
{
    worker_.setMaxThreadCount(1);
}

QString ReplacingInstaller::downloadPath()
{
    const FolderHandle folder = downloadFolder(folder_);
    if (!folder.isOpen())
        return {};
    removeDownloads(folder);
    return folder_ + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + u".archive"_s;
}

void ReplacingInstaller::prepare(const DownloadedUpdate &update, Done done)
{
    version_ = update.version;
    inBackground([update, key = key_,
                  replacement = replacement_] { return verifyAndPrepare(update, key, replacement); },
                 std::move(done));
}

void ReplacingInstaller::install(Done done)
{
    inBackground([replacement = replacement_] { return replacement.exchange(); },
                 [this, done = std::move(done)](UpdateOutcome problem) {
                     if (!problem)
                         handOver(done);
                     else
                         done(problem);
                 });
}

void ReplacingInstaller::handOver(const Done &done)
{
    handover_.start(installation_.launcher, version_, [this, done](UpdateOutcome problem) {
        if (!problem) {
            // Without a watch the update goes on; then only the user can bring the old version back.
            (void)HandoverWatch::start(handover_.socket(), handover_.successor(),
                                       replacement_.preparedExchange(),
                                       QFile::encodeName(installation_.launcher));
            done(problem);
            return;
        }
        inBackground(
            [replacement = replacement_] {
                return replacement.exchange() ? UpdateProblem::notReplaced : UpdateProblem::notStarted;
            },
            done);
    });
}

QString ReplacingInstaller::foreignFile() const
{
    const QString file = InstalledFiles(FolderHandle::open(installation_.target)).foreignFile();
    return file.isEmpty() ? QString() : installation_.target + u'/' + file;
}

void ReplacingInstaller::discard()
{
    inBackground(
        [folder = folder_, replacement = replacement_] {
            removeDownloads(FolderHandle::open(folder));
            replacement.cleanUp();
            return UpdateOutcome();
        },
        [](UpdateOutcome) {});
}

void ReplacingInstaller::inBackground(std::function<UpdateOutcome()> work, Done done)
{
    worker_.start([this, work = std::move(work), done = std::move(done)] {
        const std::function<void()> tell = [done, problem = work()] { done(problem); };
        QMetaObject::invokeMethod(&home_, tell, Qt::QueuedConnection);
    });
}
