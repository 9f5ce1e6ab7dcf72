#include "ReplacingInstaller.h"

#include <QDir>
#include <QUuid>

#include <sys/stat.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Makes `folder` one that nobody else can enter. False when it is not ours to change.
bool makePrivate(const QString &folder)
{
    const QByteArray path = QFile::encodeName(folder);
    return QDir().mkpath(QFileInfo(folder).path()) &&
           (mkdir(path.constData(), S_IRWXU) == 0 || errno == EEXIST) && !QFileInfo(folder).isSymLink() &&
           chmod(path.constData(), S_IRWXU) == 0;
}

// What a killed process left, and what is no longer wanted.
void removeDownloads(const QString &folder)
{
    QDir downloads(folder, u"*.archive"_s);
    for (const QString &name : downloads.entryList(QDir::Files))
        downloads.remove(name);
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
    if (!makePrivate(folder_))
        return {};
    removeDownloads(folder_);
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

void ReplacingInstaller::discard()
{
    inBackground(
        [folder = folder_, replacement = replacement_] {
            removeDownloads(folder);
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
