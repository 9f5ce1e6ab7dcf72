#include "ClipboardMonitor.h"

#include "AppState.h"

#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/LinkCleanerConfiguration.h>

#include <memory>
#include <utility>

namespace {

CleaningResult cleaningResult(velmora::LinkCleaningResult result)
{
    CleaningResult converted{.originalText = QString::fromStdString(result.originalText),
                             .cleanedText = QString::fromStdString(result.cleanedText),
                             .removedParameterNames = {},
                             .cleanedBytes = std::move(result.cleanedText)};
    for (const velmora::RemovedQueryItem &item : result.removedItems)
        converted.removedParameterNames.append(QString::fromStdString(item.name));
    return converted;
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
        pasteboard_.setChangeHandler([this] { waitForNextTick(); });
    else
        waitForNextTick();
}

void ClipboardMonitor::waitForNextTick()
{
    if (isWaiting_)
        return;
    isWaiting_ = true;
    const std::chrono::nanoseconds step = interval;
    const std::chrono::nanoseconds sinceLast = (scheduler_.now() - gridStart_) % step;
    steps_.after(step - sinceLast, [this] { tick(); });
}

void ClipboardMonitor::tick()
{
    isWaiting_ = false;
    if (!pasteboard_.notifiesChanges())
        waitForNextTick();
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
    pasteboard_.readString(steps_.guarded([this, count](const std::optional<std::string> &text) {
        // A newer copy, or our own text, may have arrived since. The newer copy has a tick of its own.
        const bool isCurrent = state_ && pasteboard_.changeCount() == count;
        if (isCurrent && state_->autoCleanEnabled() && text && !text->empty())
            inspect(*text);
    }));
}

void ClipboardMonitor::inspect(const std::string &text)
{
    velmora::LinkCleaningResult result = cleaner().clean(text);
    if (!result.didChange())
        return;
    const CleaningResult cleaning = cleaningResult(std::move(result));
    if (!state_->askBeforeCleaningEnabled()) {
        writeCleanedResult(cleaning);
        return;
    }
    notices_.showTrackerWarning(cleaning, steps_.guarded([this, cleaning] {
        if (state_)
            writeCleanedResult(cleaning);
    }));
}

const velmora::LinkCleaner &ClipboardMonitor::cleaner()
{
    if (!cleaner_ || cleanerDomains_ != state_->ignoredDomainsText()) {
        cleanerDomains_ = state_->ignoredDomainsText();
        cleaner_ = std::make_unique<const velmora::LinkCleaner>(
            velmora::LinkCleanerConfiguration::withDefaultRules(state_->ignoredHosts()));
    }
    return *cleaner_;
}

void ClipboardMonitor::writeCleanedResult(const CleaningResult &result)
{
    pasteboard_.clear();
    pasteboard_.setString(result.cleanedBytes);
    lastChangeCount_ = pasteboard_.changeCount(); // Our own text is no copy.
    state_->record(result);
    notices_.show(result);
}
