#include "AppState.h"

#include <VelmoraCore/LinkDetector.h>
#include <VelmoraCore/Unicode.h>
#include <VelmoraMac/State/CopiedText.h>
#include <VelmoraMac/State/IgnoredDomains.h>
#include <VelmoraMac/Telemetry/CountBuckets.h>

#include <QUuid>

#include <cstdlib>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto totalCleanedKey = u"totalCleaned";
constexpr auto totalTrackersRemovedKey = u"totalTrackersRemoved";
constexpr auto cleanedTodayKey = u"cleanedToday";
constexpr auto dayKey = u"todayKey";
constexpr auto historyEntriesKey = u"historyEntries";

// A counter that would wrap has lost its meaning; no run of the program can get there.
qint64 sum(qint64 count, qint64 more)
{
    if (count > std::numeric_limits<qint64>::max() - more)
        std::abort();
    return count + more;
}

// The host of the first link that has one, in lower case.
std::optional<std::string> firstHost(const std::string &text)
{
    for (const velmora::LinkMatch &match : velmora::LinkDetector().matches(text)) {
        if (const auto host = match.host())
            return velmora::lowercased(*host);
    }
    return {};
}

} // namespace

AppState::AppState(const Dependencies &dependencies, QObject *parent)
    : QObject(parent)
    , dependencies_(dependencies)
{
    dependencies_.defaults.setProblemHandler([this](DefaultsStore::Problem problem) { report(problem); });
    dependencies_.defaults.setRecoveryHandler(
        [this] { assign(settingsNotSaved_, false, &AppState::settingsNotSavedChanged); });
    loadStatistics();
    dependencies_.loginItem.setRefusalHandler([this] { reportRefusedLoginItem(); });
    dependencies_.pasteboard.setReachHandler([this] { Q_EMIT clipboardReachChanged(); });
}

void AppState::loadStatistics()
{
    const DefaultsStore &defaults = dependencies_.defaults;
    totalCleaned_ = defaults.integer(totalCleanedKey).value_or(0);
    totalTrackersRemoved_ = defaults.integer(totalTrackersRemovedKey).value_or(0);
    cleanedToday_ = normalizedCleanedToday();
    history_ = CleanHistory::fromJson(defaults.data(historyEntriesKey).value_or(QByteArray()));
}

AppState::~AppState()
{
    dependencies_.pasteboard.setReachHandler({});
    dependencies_.loginItem.setRefusalHandler({});
    dependencies_.defaults.setRecoveryHandler({});
    dependencies_.defaults.setProblemHandler({});
}

QString AppState::t(const QString &english, const QString &german) const
{
    return LocalizedStrings::choose(english, german, language_);
}

void AppState::setLastError(const QString &text)
{
    assign(lastError_, text, &AppState::lastErrorChanged);
}

ClipboardReach AppState::clipboardReach() const
{
    switch (dependencies_.pasteboard.reach()) {
    case Pasteboard::Reach::onlyX11:
        return ClipboardReach::onlyX11;
    case Pasteboard::Reach::none:
        return ClipboardReach::none;
    case Pasteboard::Reach::all:
        break;
    }
    return ClipboardReach::all;
}

void AppState::report(DefaultsStore::Problem problem)
{
    switch (problem) {
    case DefaultsStore::Problem::notWritable:
        assign(settingsNotSaved_, true, &AppState::settingsNotSavedChanged);
        break;
    case DefaultsStore::Problem::setAside:
        assign(settingsSetAside_, true, &AppState::settingsSetAsideChanged);
        break;
    }
}

void AppState::setActiveAppTab(AppTab tab)
{
    assign(activeAppTab_, tab, &AppState::activeAppTabChanged);
}

void AppState::reportAutoClean(bool before)
{
    if (autoCleanEnabled_ != before)
        dependencies_.telemetry.track(autoCleanEnabled_ ? TelemetryEventName::cleaningEnabled
                                                        : TelemetryEventName::cleaningDisabled,
                                      *this);
}

void AppState::reportIgnoredDomains(const QString &before)
{
    const qsizetype linesBefore = IgnoredDomains::lineCount(before);
    const qsizetype lines = IgnoredDomains::lineCount(ignoredDomainsText_);
    if (lines != linesBefore)
        dependencies_.telemetry.track(lines > linesBefore ? TelemetryEventName::ignoredDomainAdded
                                                          : TelemetryEventName::ignoredDomainRemoved,
                                      *this);
}

void AppState::reportLanguage(AppLanguage before)
{
    if (language_ != before)
        dependencies_.telemetry.track(TelemetryEventName::languageChanged, *this);
}

void AppState::reportTheme(VelmoraTheme before)
{
    if (appTheme_ != before)
        dependencies_.telemetry.track(TelemetryEventName::themeChanged, *this);
}

TelemetrySink::Properties AppState::telemetryProperties() const
{
    const QString unattended = askBeforeCleaningEnabled_ ? u"ask"_s : u"auto"_s;
    return {
        {u"app_language"_s, rawValue(language_)},
        {u"cleaning_mode"_s, autoCleanEnabled_ ? unattended : u"manual"_s},
        {u"theme"_s, rawValue(appTheme_)},
        {u"cleaned_count_bucket"_s, cleanedCountBucket(totalCleaned_)},
    };
}

std::set<std::string> AppState::ignoredHosts() const
{
    return IgnoredDomains::hosts(ignoredDomainsText_);
}

// Also when the value is the same: the user may ask again after a failure.
void AppState::applyLaunchAtLogin(bool)
{
    if (dependencies_.bundle.value(u"CFBundleIdentifier").isUndefined()) {
        setLastError(t(u"Start at Login works in the bundled app build."_s,
                       u"Beim Login starten funktioniert im gebündelten App-Build."_s));
        return;
    }
    LoginItem &item = dependencies_.loginItem;
    if (launchAtLoginEnabled_ ? item.registerItem() : item.unregisterItem())
        setLastError({});
    else
        reportRefusedLoginItem();
}

void AppState::reportRefusedLoginItem()
{
    setLastError(t(u"Start at Login could not be updated in this build."_s,
                   u"Login-Start konnte in diesem Build nicht aktualisiert werden."_s));
}

QString AppState::todayKey() const
{
    return dependencies_.clock.now().date().toString(Qt::ISODate);
}

qint64 AppState::normalizedCleanedToday()
{
    DefaultsStore &defaults = dependencies_.defaults;
    const QString today = todayKey();
    if (defaults.string(dayKey) == today)
        return defaults.integer(cleanedTodayKey).value_or(0);
    defaults.setString(dayKey, today);
    defaults.setInteger(cleanedTodayKey, 0);
    return 0;
}

void AppState::record(const CleaningResult &result)
{
    const QDateTime moment = dependencies_.clock.now();
    lastResult_ = result;
    lastCleanedAt_ = moment;
    setLastError({});
    lastOriginalClipboardValue_ = result.originalText;
    lastCleanedClipboardValue_ = result.cleanedText;
    {
        const DefaultsStore::Group group(dependencies_.defaults);
        count(result);
        remember(result, moment);
    }
    // Announced for every cleaning, also for one that equals the last: observers pulse each time.
    Q_EMIT lastResultChanged();
    Q_EMIT lastCleanedAtChanged();
    dependencies_.telemetry.track(
        TelemetryEventName::linkCleaned, *this,
        {{u"removed_parameter_count_bucket"_s, removedParameterCountBucket(result.removedCount())}});
}

void AppState::requireRoomFor(const CleaningResult &result) const
{
    (void)sum(totalCleaned_, 1);
    (void)sum(totalTrackersRemoved_, result.removedCount());
    const bool isOfToday = dependencies_.defaults.string(dayKey) == todayKey();
    (void)sum(isOfToday ? dependencies_.defaults.integer(cleanedTodayKey).value_or(0) : 0, 1);
}

void AppState::count(const CleaningResult &result)
{
    assign(totalCleaned_, sum(totalCleaned_, 1), &AppState::totalCleanedChanged);
    assign(totalTrackersRemoved_, sum(totalTrackersRemoved_, result.removedCount()),
           &AppState::totalTrackersRemovedChanged);
    assign(cleanedToday_, sum(normalizedCleanedToday(), 1), &AppState::cleanedTodayChanged);
    DefaultsStore &defaults = dependencies_.defaults;
    defaults.setInteger(totalCleanedKey, totalCleaned_);
    defaults.setInteger(totalTrackersRemovedKey, totalTrackersRemoved_);
    defaults.setString(dayKey, todayKey());
    defaults.setInteger(cleanedTodayKey, cleanedToday_);
}

void AppState::remember(const CleaningResult &result, const QDateTime &moment)
{
    CleanHistoryEntry entry;
    entry.id = QUuid::createUuid();
    entry.originalText = result.originalText;
    entry.cleanedText = result.cleanedText;
    entry.removedCount = result.removedCount();
    entry.removedParameterNames = result.removedParameterNames;
    entry.originalBytes = result.originalBytes;
    entry.cleanedBytes = result.cleanedBytes;
    entry.setCleanedAt(moment);
    history_.prepend(std::move(entry));
    Q_EMIT historyEntriesChanged();
    dependencies_.defaults.setPieces(historyEntriesKey, history_.pieces());
}

void AppState::write(const QString &text, bool isWhole)
{
    if (!isWhole) { // A part in the place of the whole would be lost text.
        setLastError(
            t(u"This text was too long to be kept whole, so it cannot be copied again."_s,
              u"Dieser Text war zu lang, um ganz aufbewahrt zu werden, und kann nicht erneut kopiert "
              u"werden."_s));
        return;
    }
    dependencies_.pasteboard.clear();
    dependencies_.pasteboard.setString(bytesFromText(text));
    setLastError({});
}

void AppState::copyCleanedLink(const CleanHistoryEntry &entry)
{
    write(entry.cleanedText, entry.cleanedBytes == 0);
}

void AppState::restoreOriginalLink(const CleanHistoryEntry &entry)
{
    write(entry.originalText, entry.originalBytes == 0);
}

void AppState::addIgnoredHostFromLastResult()
{
    const std::optional<std::string> host = firstHost(bytesFromText(lastResult_.cleanedText));
    if (host && !ignoredHosts().contains(*host))
        setIgnoredDomainsText(IgnoredDomains::appending(ignoredDomainsText_, QString::fromStdString(*host)));
}

void AppState::clearHistory()
{
    const bool wasEmpty = history_.entries().isEmpty();
    history_ = {};
    if (!wasEmpty)
        Q_EMIT historyEntriesChanged();
    dependencies_.defaults.remove(historyEntriesKey);
}
