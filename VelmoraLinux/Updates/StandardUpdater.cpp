#include "StandardUpdater.h"

#include <QRandomGenerator>

#include <sys/utsname.h>

#include <gnu/libc-version.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr QStringView rolloutGroupKey = u"SUUpdateGroupIdentifier";
constexpr QStringView skippedVersionKey = u"SUSkippedVersion";
constexpr int rolloutGroups = 7;
constexpr auto cleanUpDelay = 10s; // After the start has succeeded: out of the way of what a start has to do.

QString machine()
{
    utsname names{};
    return uname(&names) == 0 ? QString::fromLatin1(names.machine) : QString();
}

int rolloutGroup(DefaultsStore &defaults)
{
    if (const auto group = defaults.integer(rolloutGroupKey))
        return static_cast<int>(*group % rolloutGroups);
    const int group = QRandomGenerator::global()->bounded(rolloutGroups);
    defaults.setInteger(rolloutGroupKey, group);
    return group;
}

} // namespace

StandardUpdater::StandardUpdater(Dependencies dependencies, const UpdateConfiguration &configuration)
    : dependencies_(std::move(dependencies))
    , key_(UpdateKey::fromBase64(configuration.publicKey))
    , schedule_(
          dependencies_.defaults, dependencies_.scheduler, dependencies_.clock, scheduleSettings(),
          {.askPermission = [this] { show(UpdateStep::permission, {}, UpdateUserDriver::Attention::quiet); },
           .check = [this] { session_->check(CheckKind::scheduled); }})
    , steps_(dependencies_.scheduler)
{
    dependencies_.driver.setAnswerHandler([this](UpdateAnswer given) { answer(given); });
    if (dependencies_.installation.kind == Installation::Kind::managed || !key_)
        return;
    downloader_ = std::make_unique<HttpsDownloader>(dependencies_.network);
    installer_ = std::make_unique<ReplacingInstaller>(dependencies_.installation, *key_,
                                                      dependencies_.downloadFolder, dependencies_.scheduler);
    session_ =
        std::make_unique<UpdateSession>(UpdateSession::Dependencies{.downloader = *downloader_,
                                                                    .installer = *installer_,
                                                                    .driver = dependencies_.driver,
                                                                    .defaults = dependencies_.defaults,
                                                                    .host = [this] { return host(); },
                                                                    .openPage = dependencies_.openPage,
                                                                    .quit = dependencies_.quit,
                                                                    .changed = [this] { noteChange(); }},
                                        configuration.feed, shownVersion());
    start();
}

void StandardUpdater::start()
{
    schedule_.start();
    if (dependencies_.lastUpdateFailed)
        steps_.after(0s, [this] {
            show(UpdateStep::failed, UpdateProblem::notStarted, UpdateUserDriver::Attention::quiet);
        });
    const auto discard = [this] {
        if (!session_->isRunning())
            installer_->discard();
    };
    dependencies_.whenStanding(steps_.guarded([this, discard] { steps_.after(cleanUpDelay, discard); }));
}

void StandardUpdater::checkForUpdates()
{
    if (ownStep_ || (session_ && session_->isVisible())) {
        dependencies_.driver.bringToFront();
    } else if (!key_) {
        show(UpdateStep::failed, UpdateProblem::badKey, UpdateUserDriver::Attention::front);
    } else if (!session_) {
        show(UpdateStep::managed, dependencies_.installation.problem, UpdateUserDriver::Attention::front);
    } else if (!session_->isRunning()) {
        schedule_.noteCheck();
        session_->check(CheckKind::byUser);
    }
}

bool StandardUpdater::canCheckForUpdates() const
{
    return !session_ || !session_->isRunning() || session_->isVisible();
}

void StandardUpdater::setChangeHandler(ChangeHandler handler)
{
    changed_ = std::move(handler);
}

void StandardUpdater::noteChange()
{
    if (couldCheck_ == canCheckForUpdates())
        return;
    couldCheck_ = canCheckForUpdates();
    changed_();
}

void StandardUpdater::show(UpdateStep step, UpdateOutcome problem, UpdateUserDriver::Attention attention)
{
    ownStep_ = step;
    UpdateReport report;
    report.step = step;
    report.ownVersion = shownVersion();
    report.problem = problem;
    report.manager = dependencies_.installation.manager;
    report.place = dependencies_.installation.place;
    dependencies_.driver.show(report, attention);
}

void StandardUpdater::answer(UpdateAnswer answer)
{
    if (!ownStep_) {
        if (session_)
            session_->answer(answer);
        return;
    }
    const UpdateStep answered = *ownStep_;
    ownStep_.reset();
    dependencies_.driver.dismiss();
    if (answered == UpdateStep::permission)
        schedule_.setPermission(answer == UpdateAnswer::accept);
}

QString StandardUpdater::ownVersion() const
{
    return dependencies_.bundle.value(u"CFBundleVersion").toString();
}

QString StandardUpdater::shownVersion() const
{
    return dependencies_.bundle.value(u"CFBundleShortVersionString").toString(ownVersion());
}

UpdateSchedule::Settings StandardUpdater::scheduleSettings() const
{
    UpdateSchedule::Settings settings;
    constexpr QStringView interval = u"SUScheduledCheckInterval";
    const auto chosen = dependencies_.defaults.integer(interval);
    const qint64 seconds = chosen.value_or(dependencies_.bundle.value(interval).toInteger());
    if (seconds > 0)
        settings.interval = std::chrono::seconds(std::min<qint64>(seconds, 366LL * 24 * 3600));
    const QJsonValue answer = dependencies_.bundle.value(u"SUEnableAutomaticChecks");
    if (answer.isBool())
        settings.fixedAnswer = answer.toBool();
    return settings;
}

UpdateHost StandardUpdater::host() const
{
    return {.version = ownVersion(),
            .systemVersion = QString::fromLatin1(gnu_get_libc_version()),
            .system = u"linux"_s,
            .architecture = machine(),
            .archiveTypes = dependencies_.installation.archiveTypes(),
            .skippedVersion = dependencies_.defaults.string(skippedVersionKey).value_or(QString()),
            .rolloutGroup = rolloutGroup(dependencies_.defaults),
            .now = dependencies_.clock.now()};
}
