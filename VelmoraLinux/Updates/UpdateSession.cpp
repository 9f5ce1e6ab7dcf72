#include "UpdateSession.h"

namespace {

constexpr QStringView kSkippedVersion = u"SUSkippedVersion";
constexpr qint64 kMaximumArchiveBytes = 512LL * 1024 * 1024;

} // namespace

UpdateSession::UpdateSession(Parts parts, QUrl feed, QString ownVersion)
    : parts_(std::move(parts))
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
    parts_.downloader.fetch(
        feed_, AppcastReader::kMaximumBytes,
        [this](UpdateProblem problem, const QByteArray &bytes) { readFeed(problem, bytes); });
}

void UpdateSession::readFeed(UpdateProblem problem, const QByteArray &bytes)
{
    const auto appcast = problem == UpdateProblem::none ? AppcastReader::read(bytes) : std::nullopt;
    if (problem == UpdateProblem::none && !appcast)
        problem = UpdateProblem::feedDamaged;
    if (problem != UpdateProblem::none)
        fail(problem);
    else
        offer(chooseUpdate(*appcast, parts_.host(), kind_));
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
        parts_.downloader.cancel();
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
            parts_.defaults.setString(kSkippedVersion, choice_.item->version);
        finish();
        return;
    }
    parts_.defaults.remove(kSkippedVersion);
    if (!choice_.informational) {
        download();
        return;
    }
    parts_.openPage(choice_.item->page);
    finish();
}

void UpdateSession::download()
{
    const AppcastEnclosure &archive = choice_.item->enclosures.first();
    update_ = {parts_.installer.downloadPath(), archive.length, archive.signature, choice_.item->version};
    if (archive.length > kMaximumArchiveBytes || update_.path.isEmpty()) {
        fail(update_.path.isEmpty() ? UpdateProblem::noSpace : UpdateProblem::tooLarge);
        return;
    }
    show(report(UpdateStep::downloading));
    parts_.downloader.fetchToFile(
        archive.url, archive.length, update_.path,
        [this](qint64 received) {
            UpdateReport progress = report(UpdateStep::downloading);
            progress.received = received;
            show(progress);
        },
        [this](UpdateProblem problem) {
            if (problem == UpdateProblem::none)
                prepare();
            else
                fail(problem);
        });
}

void UpdateSession::prepare()
{
    show(report(UpdateStep::verifying));
    parts_.installer.prepare(update_, [this](UpdateProblem problem) {
        if (problem == UpdateProblem::none)
            show(report(UpdateStep::ready));
        else
            fail(problem);
    });
}

void UpdateSession::install()
{
    show(report(UpdateStep::installing));
    parts_.installer.install([this](UpdateProblem problem) {
        if (problem == UpdateProblem::none)
            parts_.quit();
        else
            fail(problem);
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
    parts_.driver.show(report,
                       takesFocus ? UpdateUserDriver::Attention::front : UpdateUserDriver::Attention::quiet);
}

void UpdateSession::enter(UpdateStep step)
{
    const bool isNew = step_ != step;
    step_ = step;
    if (isNew)
        parts_.changed();
}

// A scheduled check fails silently; once the user has seen something, the failure is shown.
void UpdateSession::fail(UpdateProblem problem)
{
    parts_.installer.discard();
    if (!visible_) {
        finish();
        return;
    }
    UpdateReport failure = report(UpdateStep::failed);
    failure.problem = problem;
    show(failure);
}

void UpdateSession::finish()
{
    parts_.installer.discard();
    if (visible_)
        parts_.driver.dismiss();
    visible_ = false;
    step_.reset();
    parts_.changed();
}
