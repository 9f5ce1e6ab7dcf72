#include "ClipboardMonitor.h"

#include "AppState.h"

#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/LinkCleanerConfiguration.h>

#include <memory>
#include <utility>

// A result in both forms: the bytes that go back to the clipboard and what the user sees of them.
struct ClipboardMonitor::Cleaning {
    std::string cleanedBytes;
    CleaningResult result;
};

namespace {

velmora::LinkCleaningResult clean(const std::string &text, const AppState &state)
{
    using velmora::LinkCleanerConfiguration;
    return velmora::LinkCleaner(LinkCleanerConfiguration::withDefaultRules(state.ignoredHosts())).clean(text);
}

CleaningResult forDisplay(const velmora::LinkCleaningResult &result)
{
    CleaningResult shown{
        QString::fromStdString(result.originalText), QString::fromStdString(result.cleanedText), {}};
    for (const velmora::RemovedQueryItem &item : result.removedItems)
        shown.removedParameterNames.append(QString::fromStdString(item.name));
    return shown;
}

} // namespace

ClipboardMonitor::ClipboardMonitor(Pasteboard &pasteboard, Scheduler &scheduler, CleaningNotices &notices,
                                   QObject *parent)
    : QObject(parent)
    , pasteboard_(pasteboard)
    , scheduler_(scheduler)
    , notices_(notices)
    , steps_(scheduler)
    , lastChangeCount_(pasteboard.changeCount())
{
}

ClipboardMonitor::~ClipboardMonitor()
{
    if (isRunning_)
        pasteboard_.setChangeHandler({});
}

void ClipboardMonitor::start(AppState &state)
{
    if (isRunning_)
        return;
    state_ = &state;
    gridStart_ = scheduler_.now();
    lastChangeCount_ = pasteboard_.changeCount();
    isRunning_ = true;
    Q_EMIT isRunningChanged();
    if (pasteboard_.notifiesChanges())
        pasteboard_.setChangeHandler([this] { waitForNextGridPoint(); });
    else
        waitForNextGridPoint();
}

void ClipboardMonitor::waitForNextGridPoint()
{
    if (isWaiting_)
        return;
    isWaiting_ = true;
    const std::chrono::nanoseconds step = interval;
    const std::chrono::nanoseconds sinceLast = (scheduler_.now() - gridStart_) % step;
    steps_.after(step - sinceLast, [this] { reachGridPoint(); });
}

void ClipboardMonitor::reachGridPoint()
{
    isWaiting_ = false;
    if (!pasteboard_.notifiesChanges())
        waitForNextGridPoint();
    if (state_)
        inspectClipboard();
}

void ClipboardMonitor::inspectClipboard()
{
    const qint64 count = pasteboard_.changeCount();
    if (count == lastChangeCount_)
        return;
    lastChangeCount_ = count;
    if (!state_->autoCleanEnabled())
        return;
    pasteboard_.readString([self = QPointer(this), count](const std::optional<std::string> &text) {
        // A newer copy, or our own text, may have arrived since: then this answer is history. The newer copy
        // has a grid point of its own.
        const bool isCurrent = self && self->state_ && self->pasteboard_.changeCount() == count;
        if (isCurrent && self->state_->autoCleanEnabled() && text && !text->empty())
            self->inspect(*text);
    });
}

void ClipboardMonitor::inspect(const std::string &text)
{
    velmora::LinkCleaningResult result = clean(text, *state_);
    if (!result.didChange())
        return;
    const CleaningResult shown = forDisplay(result);
    const auto cleaning = std::make_shared<const Cleaning>(Cleaning{std::move(result.cleanedText), shown});
    if (!state_->askBeforeCleaningEnabled()) {
        writeCleanedResult(*cleaning);
        return;
    }
    notices_.showTrackerWarning(shown, [self = QPointer(this), cleaning] {
        if (self && self->state_)
            self->writeCleanedResult(*cleaning);
    });
}

void ClipboardMonitor::writeCleanedResult(const Cleaning &cleaning)
{
    pasteboard_.clear();
    pasteboard_.setString(cleaning.cleanedBytes);
    lastChangeCount_ = pasteboard_.changeCount(); // Our own text is no copy.
    state_->record(cleaning.result);
    notices_.show(cleaning.result);
}
