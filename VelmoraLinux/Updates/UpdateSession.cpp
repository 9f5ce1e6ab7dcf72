#include "UpdateSession.h"

namespace {

constexpr QStringView skippedVersionKey = u"SUSkippedVersion";
constexpr qint64 maximumArchiveBytes = 512LL * 1024 * 1024;

} // namespace

UpdateSession::UpdateSession(Dependencies dependencies, QUrl feed, QString ownVersion)
    : dependencies_(std::move(dependencies))
    , feed_(std::move(feed))
    , ownVersion_(std::move(ownVersion))
{
}

void UpdateSession::check(CheckKind kind)
{
    if (isRunning())
        return;
    kind_ = kind;
    choice_ = {};
    if (kind == CheckKind::byUser)
        show(report(UpdateStep::checking));
    else
        enter(UpdateStep::checking);
    dependencies_.downloader.fetch(
        feed_, AppcastReader::maximumBytes,
        [this](UpdateOutcome problem, const QByteArray &bytes) { readFeed(problem, bytes); });
}

void UpdateSession::readFeed(UpdateOutcome problem, const QByteArray &bytes)
{
    const auto appcast = problem ? std::nullopt : AppcastReader::read(bytes);
    if (!appcast)
        fail(problem.value_or(UpdateProblem::feedDamaged));
    else
        offer(chooseUpdate(*appcast, dependencies_.host(), kind_));
}

void UpdateSession::offer(const UpdateChoice &choice)
{
    choice_ = choice;
    if (choice.item) {
        show(report(UpdateStep::found));
    } else if (kind_ == CheckKind::byUser) {
        show(report(UpdateStep::upToDate));
    } else {
        finish();
    }
}

void UpdateSession::answer(UpdateAnswer answer)
{
    if (!step_ || !visible_)
        return;
    switch (*step_) {
    case UpdateStep::checking:
    case UpdateStep::downloading:
        dependencies_.downloader.cancel();
        finish();
        break;
    case UpdateStep::found:
        answerOffer(answer);
        break;
    case UpdateStep::ready:
        if (answer == UpdateAnswer::accept)
            install();
        else
            finish();
        break;
    case UpdateStep::upToDate:
    case UpdateStep::failed:
        finish();
        break;
    default: // Nothing to answer during these steps.
        break;
    }
}

void UpdateSession::answerOffer(UpdateAnswer answer)
{
    if (answer != UpdateAnswer::accept) {
        if (answer == UpdateAnswer::skip && !choice_.critical)
            dependencies_.defaults.setString(skippedVersionKey, choice_.item->version);
        finish();
        return;
    }
    dependencies_.defaults.remove(skippedVersionKey);
    if (!choice_.informational) {
        download();
        return;
    }
    dependencies_.openPage(choice_.item->page);
    finish();
}

void UpdateSession::download()
{
    const AppcastEnclosure &archive = choice_.item->enclosures.first();
    update_ = {dependencies_.installer.downloadPath(), archive.length, archive.signature,
               choice_.item->version};
    if (archive.length > maximumArchiveBytes || update_.path.isEmpty()) {
        fail(update_.path.isEmpty() ? UpdateProblem::noSpace : UpdateProblem::tooLarge);
        return;
    }
    show(report(UpdateStep::downloading));
    dependencies_.downloader.fetchToFile(
        archive.url, archive.length, update_.path,
        [this](qint64 received) {
            UpdateReport progress = report(UpdateStep::downloading);
            progress.received = received;
            show(progress);
        },
        [this](UpdateOutcome problem) {
            if (problem)
                fail(*problem);
            else
                prepare();
        });
}

void UpdateSession::prepare()
{
    show(report(UpdateStep::verifying));
    dependencies_.installer.prepare(update_, [this](UpdateOutcome problem) {
        if (problem)
            fail(*problem);
        else
            show(report(UpdateStep::ready));
    });
}

void UpdateSession::install()
{
    show(report(UpdateStep::installing));
    dependencies_.installer.install([this](UpdateOutcome problem) {
        if (problem)
            fail(*problem);
        else
            dependencies_.quit();
    });
}

UpdateReport UpdateSession::report(UpdateStep step) const
{
    UpdateReport result;
    result.step = step;
    result.ownVersion = ownVersion_;
    result.otherSystemOnly = choice_.otherSystemOnly;
    if (!choice_.item)
        return result;
    result.version = choice_.item->shownVersion;
    result.mayBePutOff = !choice_.critical;
    if (step == UpdateStep::found) {
        result.notes = choice_.item->notes;
        result.page = choice_.informational ? choice_.item->page : QUrl();
    }
    if (step == UpdateStep::downloading)
        result.total = choice_.item->enclosures.first().length;
    return result;
}

void UpdateSession::show(const UpdateReport &report)
{
    const bool takesFocus = kind_ == CheckKind::byUser;
    visible_ = true;
    enter(report.step);
    dependencies_.driver.show(report, takesFocus ? UpdateUserDriver::Attention::front
                                                 : UpdateUserDriver::Attention::quiet);
}

void UpdateSession::enter(UpdateStep step)
{
    const bool isNew = step_ != step;
    step_ = step;
    if (isNew)
        dependencies_.changed();
}

// A scheduled check fails silently; once the user has seen something, the failure is shown.
void UpdateSession::fail(UpdateProblem problem)
{
    dependencies_.installer.discard();
    if (!visible_) {
        finish();
        return;
    }
    UpdateReport failure = report(UpdateStep::failed);
    failure.problem = problem;
    if (problem == UpdateProblem::foreignFile)
        failure.place = dependencies_.installer.foreignFile();
    show(failure);
}

void UpdateSession::finish()
{
    dependencies_.installer.discard();
    if (visible_)
        dependencies_.driver.dismiss();
    visible_ = false;
    step_.reset();
    dependencies_.changed();
}
