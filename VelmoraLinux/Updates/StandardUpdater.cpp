#include "StandardUpdater.h"

#include <QRandomGenerator>

#include <sys/utsname.h>

#include <gnu/libc-version.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr QStringView kRolloutGroup = u"SUUpdateGroupIdentifier";
constexpr QStringView kSkippedVersion = u"SUSkippedVersion";
constexpr int kRolloutGroups = 7;
constexpr auto kCleanUpDelay =
    10s; // From then on a new version counts as started, and the old one is removed.

QString machine()
{
    utsname names{};
    return uname(&names) == 0 ? QString::fromLatin1(names.machine) : QString();
}

int rolloutGroup(DefaultsStore &defaults)
{
    if (const auto group = defaults.integer(kRolloutGroup))
        return static_cast<int>(*group % kRolloutGroups);
    const int group = QRandomGenerator::global()->bounded(kRolloutGroups);
    defaults.setInteger(kRolloutGroup, group);
    return group;
}

} // namespace

StandardUpdater::StandardUpdater(Environment environment, const UpdateConfiguration &configuration)
    : environment_(std::move(environment))
    , key_(UpdateKey::fromBase64(configuration.publicKey))
    , schedule_(environment_.defaults, environment_.scheduler, environment_.clock, scheduleSettings(),
                {.askPermission =
                     [this] {
                         show(UpdateStep::permission, UpdateProblem::none,
                              UpdateUserDriver::Attention::quiet);
                     },
                 .check = [this] { session_->check(CheckKind::scheduled); }})
    , steps_(environment_.scheduler)
{
    environment_.driver.setAnswerHandler([this](UpdateAnswer given) { answer(given); });
    if (environment_.installation.kind == Installation::Kind::managed || !key_)
        return;
    downloader_ = std::make_unique<HttpsDownloader>(environment_.network);
    installer_ = std::make_unique<ReplacingInstaller>(environment_.installation, *key_,
                                                      environment_.downloadFolder, environment_.scheduler);
    session_ = std::make_unique<UpdateSession>(UpdateSession::Parts{.downloader = *downloader_,
                                                                    .installer = *installer_,
                                                                    .driver = environment_.driver,
                                                                    .defaults = environment_.defaults,
                                                                    .host = [this] { return host(); },
                                                                    .openPage = environment_.openPage,
                                                                    .quit = environment_.quit,
                                                                    .changed = [this] { noteChange(); }},
                                               configuration.feed, shownVersion());
    start();
}

void StandardUpdater::start()
{
    schedule_.start();
    steps_.after(kCleanUpDelay, [this] {
        if (!session_->isRunning())
            installer_->discard();
    });
}

void StandardUpdater::checkForUpdates()
{
    if (ownStep_ || (session_ && session_->isVisible())) {
        environment_.driver.bringToFront();
    } else if (!key_) {
        show(UpdateStep::failed, UpdateProblem::badKey, UpdateUserDriver::Attention::front);
    } else if (!session_) {
        show(UpdateStep::managed, UpdateProblem::none, UpdateUserDriver::Attention::front);
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

void StandardUpdater::show(UpdateStep step, UpdateProblem problem, UpdateUserDriver::Attention attention)
{
    ownStep_ = step;
    UpdateReport report;
    report.step = step;
    report.ownVersion = shownVersion();
    report.problem = problem;
    report.manager = environment_.installation.manager;
    environment_.driver.show(report, attention);
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
    environment_.driver.dismiss();
    if (answered == UpdateStep::permission)
        schedule_.setPermission(answer == UpdateAnswer::accept);
}

QString StandardUpdater::ownVersion() const
{
    return environment_.bundle.value(u"CFBundleVersion").toString();
}

QString StandardUpdater::shownVersion() const
{
    return environment_.bundle.value(u"CFBundleShortVersionString").toString(ownVersion());
}

UpdateSchedule::Settings StandardUpdater::scheduleSettings() const
{
    UpdateSchedule::Settings settings;
    constexpr QStringView interval = u"SUScheduledCheckInterval";
    const auto chosen = environment_.defaults.integer(interval);
    const qint64 seconds = chosen.value_or(environment_.bundle.value(interval).toInteger());
    if (seconds > 0)
        settings.interval = std::chrono::seconds(std::min<qint64>(seconds, 366LL * 24 * 3600));
    const QJsonValue answer = environment_.bundle.value(u"SUEnableAutomaticChecks");
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
            .archiveType = environment_.installation.archiveType(),
            .skippedVersion = environment_.defaults.string(kSkippedVersion).value_or(QString()),
            .rolloutGroup = rolloutGroup(environment_.defaults),
            .now = environment_.clock.now()};
}
