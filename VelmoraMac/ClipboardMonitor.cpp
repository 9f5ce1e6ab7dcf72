#include "ClipboardMonitor.h"

#include "AppState.h"

#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/LinkCleanerConfiguration.h>
#include <VelmoraMac/State/CopiedText.h>

#include <memory>
#include <utility>

namespace {

// Collects what a cleaning removes, as far as it is shown.
class RemovedNames final : public velmora::CleaningVisitor {
public:
    explicit RemovedNames(CleaningResult &result)
        : result_(result)
    {
    }

    void visitRemovedItem(std::string_view name, std::optional<std::string_view>) override
    {
        if (result_.removedParameterNames.size() < mostParameterNames)
            result_.removedParameterNames.append(textFromBytes(name));
        else
            ++result_.moreRemoved;
    }

    void visitCleanedLink(std::size_t, std::size_t, std::string_view) override {}

private:
    CleaningResult &result_;
};

void keepText(std::string_view bytes, QString &text, qint64 &wholeBytes)
{
    CopiedText copied = CopiedText::from(bytes, CleanHistory::longestText, CleanHistory::longestText);
    text = std::move(copied.text);
    wholeBytes = copied.wholeBytes;
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
    CleaningResult result;
    RemovedNames names(result);
    auto cleanedText = std::make_shared<std::string>();
    const bool hadTrackers = cleaner().appendCleaned(text, *cleanedText, &names, velmora::TextExtent::whole);
    if (!hadTrackers || *cleanedText == text)
        return;
    keepText(text, result.originalText, result.originalBytes);
    keepText(*cleanedText, result.cleanedText, result.cleanedBytes);
    shortenNames(result.removedParameterNames);
    if (!state_->askBeforeCleaningEnabled()) {
        writeCleanedResult(result, std::move(*cleanedText));
        return;
    }
    notices_.showTrackerWarning(result, steps_.guarded([this, result, cleanedText] {
        if (state_)
            writeCleanedResult(result, *cleanedText);
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

void ClipboardMonitor::writeCleanedResult(const CleaningResult &result, std::string cleanedText)
{
    state_->requireRoomFor(result);
    pasteboard_.clear();
    pasteboard_.setString(std::move(cleanedText), steps_.guarded([this, result](bool isOurs) {
        if (!isOurs || !state_)
            return;
        state_->record(result);
        notices_.show(result);
    }));
    lastChangeCount_ = pasteboard_.changeCount(); // Our own text is no copy.
}
