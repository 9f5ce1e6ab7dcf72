#include "AppState.h"

#include <VelmoraCore/LinkDetector.h>
#include <VelmoraCore/Unicode.h>
#include <VelmoraMac/State/IgnoredDomains.h>
#include <VelmoraMac/Telemetry/CountBuckets.h>
#include <VelmoraMac/Texts/LocalizedStrings.h>

#include <QUuid>

#include <cstdlib>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr auto autoCleanEnabledKey = u"autoCleanEnabled";
constexpr auto askBeforeCleaningEnabledKey = u"askBeforeCleaningEnabled";
constexpr auto telemetryEnabledKey = u"telemetryEnabled";
constexpr auto launchAtLoginEnabledKey = u"launchAtLoginEnabled";
constexpr auto ignoredDomainsTextKey = u"ignoredDomainsText";
constexpr auto appThemeKey = u"appTheme";
constexpr auto languageKey = u"language";
constexpr auto totalCleanedKey = u"totalCleaned";
constexpr auto totalTrackersRemovedKey = u"totalTrackersRemoved";
constexpr auto cleanedTodayKey = u"cleanedToday";
constexpr auto dayKey = u"todayKey";
constexpr auto historyEntriesKey = u"historyEntries";

constexpr qsizetype historyLimit = 30;

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

template<typename Enum>
Enum stored(const DefaultsStore &defaults, QStringView key, Enum otherwise)
{
    return fromRawValue<Enum>(defaults.string(key).value_or(QString())).value_or(otherwise);
}

} // namespace

AppState::AppState(const Services &services, QObject *parent)
    : QObject(parent)
    , services_(services)
{
    load();
    services_.loginItem.setRefusalHandler([this] { reportRefusedLoginItem(); });
}

AppState::~AppState()
{
    services_.loginItem.setRefusalHandler({});
    services_.defaults.setProblemHandler({});
}

template<typename Value>
bool AppState::assign(Value &field, const Value &value, void (AppState::*changed)())
{
    if (field == value)
        return false;
    field = value;
    (this->*changed)();
    return true;
}

void AppState::load()
{
    DefaultsStore &defaults = services_.defaults;
    autoCleanEnabled_ = defaults.boolean(autoCleanEnabledKey).value_or(true);
    launchAtLoginEnabled_ = defaults.boolean(launchAtLoginEnabledKey).value_or(false);
    askBeforeCleaningEnabled_ = defaults.boolean(askBeforeCleaningEnabledKey).value_or(false);
    telemetryEnabled_ = defaults.boolean(telemetryEnabledKey).value_or(true);
    ignoredDomainsText_ = defaults.string(ignoredDomainsTextKey).value_or(QString());
    appTheme_ = stored(defaults, appThemeKey, VelmoraTheme::graphite);
    language_ = stored(defaults, languageKey, LocalizedStrings::systemDefault());
    defaults.setProblemHandler([this](DefaultsStore::Problem problem) { report(problem); });
    totalCleaned_ = defaults.integer(totalCleanedKey).value_or(0);
    totalTrackersRemoved_ = defaults.integer(totalTrackersRemovedKey).value_or(0);
    cleanedToday_ = normalizedCleanedToday();
    historyEntries_ = historyFromJson(defaults.data(historyEntriesKey).value_or(QByteArray()))
                          .value_or(QList<CleanHistoryEntry>());
    if (!services_.pasteboard.isReachable())
        reportMissingClipboard();
}

void AppState::reportMissingClipboard()
{
    assign(lastError_,
           LocalizedStrings::choose(
               u"Velmora cannot reach the clipboard of this session, so links stay as "
               u"they are. Start it in another kind of session, which your login screen offers."_s,
               u"Velmora erreicht die Zwischenablage dieser Sitzung nicht, darum "
               u"bleiben Links, wie sie sind. Starte es in einer anderen Art von "
               u"Sitzung, die dein Anmeldebildschirm anbietet."_s,
               language_),
           &AppState::lastErrorChanged);
}

void AppState::report(DefaultsStore::Problem problem)
{
    const QString text =
        problem == DefaultsStore::Problem::notWritable
            ? LocalizedStrings::choose(u"Settings cannot be saved and last only until you quit. Make room on "
                                       u"the disk and check that "
                                       u"your data folder is writable."_s,
                                       u"Einstellungen können nicht gespeichert werden und gelten nur bis "
                                       u"zum Beenden. Schaffe Platz auf "
                                       u"dem Datenträger und prüfe, ob dein Datenordner beschreibbar ist."_s,
                                       language_)
            : LocalizedStrings::choose(u"The settings file was damaged. It was kept under another name, and "
                                       u"Velmora began with new "
                                       u"settings. Please check them."_s,
                                       u"Die Einstellungsdatei war beschädigt. Sie wurde unter anderem Namen "
                                       u"aufbewahrt, und Velmora hat "
                                       u"mit neuen Einstellungen begonnen. Bitte prüfe sie."_s,
                                       language_);
    assign(lastError_, text, &AppState::lastErrorChanged);
}

void AppState::setActiveAppTab(const AppTab &tab)
{
    assign(activeAppTab_, tab, &AppState::activeAppTabChanged);
}

void AppState::setAutoCleanEnabled(const bool &enabled)
{
    const bool differs = assign(autoCleanEnabled_, enabled, &AppState::autoCleanEnabledChanged);
    services_.defaults.setBoolean(autoCleanEnabledKey, enabled);
    if (differs) {
        services_.telemetry.track(
            enabled ? TelemetryEventName::cleaningEnabled : TelemetryEventName::cleaningDisabled, *this);
    }
}

void AppState::setLaunchAtLoginEnabled(const bool &enabled)
{
    assign(launchAtLoginEnabled_, enabled, &AppState::launchAtLoginEnabledChanged);
    services_.defaults.setBoolean(launchAtLoginEnabledKey, enabled);
    applyLaunchAtLogin();
}

void AppState::setIgnoredDomainsText(const QString &text)
{
    const qsizetype before = IgnoredDomains::lineCount(ignoredDomainsText_);
    assign(ignoredDomainsText_, text, &AppState::ignoredDomainsTextChanged);
    services_.defaults.setString(ignoredDomainsTextKey, text);
    const qsizetype after = IgnoredDomains::lineCount(text);
    if (after != before) {
        services_.telemetry.track(after > before ? TelemetryEventName::ignoredDomainAdded
                                                 : TelemetryEventName::ignoredDomainRemoved,
                                  *this);
    }
}

void AppState::setAskBeforeCleaningEnabled(const bool &enabled)
{
    assign(askBeforeCleaningEnabled_, enabled, &AppState::askBeforeCleaningEnabledChanged);
    services_.defaults.setBoolean(askBeforeCleaningEnabledKey, enabled);
}

void AppState::setTelemetryEnabled(const bool &enabled)
{
    assign(telemetryEnabled_, enabled, &AppState::telemetryEnabledChanged);
    services_.defaults.setBoolean(telemetryEnabledKey, enabled);
}

void AppState::setLanguage(const AppLanguage &language)
{
    const bool differs = assign(language_, language, &AppState::languageChanged);
    services_.defaults.setString(languageKey, rawValue(language));
    if (differs)
        services_.telemetry.track(TelemetryEventName::languageChanged, *this);
}

void AppState::setAppTheme(const VelmoraTheme &theme)
{
    const bool differs = assign(appTheme_, theme, &AppState::appThemeChanged);
    services_.defaults.setString(appThemeKey, rawValue(theme));
    if (differs)
        services_.telemetry.track(TelemetryEventName::themeChanged, *this);
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

void AppState::applyLaunchAtLogin()
{
    if (services_.bundle.value(u"CFBundleIdentifier").isUndefined()) {
        assign(lastError_,
               LocalizedStrings::choose(u"Start at Login works in the bundled app build."_s,
                                        u"Beim Login starten funktioniert im gebündelten App-Build."_s,
                                        language_),
               &AppState::lastErrorChanged);
        return;
    }
    LoginItem &item = services_.loginItem;
    if (launchAtLoginEnabled_ ? item.registerItem() : item.unregisterItem())
        assign(lastError_, QString(), &AppState::lastErrorChanged);
    else
        reportRefusedLoginItem();
}

void AppState::reportRefusedLoginItem()
{
    assign(lastError_,
           LocalizedStrings::choose(u"Start at Login could not be updated in this build."_s,
                                    u"Login-Start konnte in diesem Build nicht aktualisiert werden."_s,
                                    language_),
           &AppState::lastErrorChanged);
}

QString AppState::todayKey() const
{
    return services_.clock.now().date().toString(Qt::ISODate);
}

qint64 AppState::normalizedCleanedToday()
{
    DefaultsStore &defaults = services_.defaults;
    const QString today = todayKey();
    if (defaults.string(dayKey) == today)
        return defaults.integer(cleanedTodayKey).value_or(0);
    defaults.setString(dayKey, today);
    defaults.setInteger(cleanedTodayKey, 0);
    return 0;
}

void AppState::record(const CleaningResult &result)
{
    const QDateTime moment = services_.clock.now();
    lastResult_ = result;
    lastCleanedAt_ = moment;
    assign(lastError_, QString(), &AppState::lastErrorChanged);
    lastOriginalClipboardValue_ = result.originalText;
    lastCleanedClipboardValue_ = result.cleanedText;
    count(result);
    remember(result, moment);
    // Announced for every cleaning, also for one that equals the last: observers pulse each time.
    Q_EMIT lastResultChanged();
    Q_EMIT lastCleanedAtChanged();
    services_.telemetry.track(
        TelemetryEventName::linkCleaned, *this,
        {{u"removed_parameter_count_bucket"_s, removedParameterCountBucket(result.removedCount())}});
}

void AppState::count(const CleaningResult &result)
{
    assign(totalCleaned_, sum(totalCleaned_, 1), &AppState::totalCleanedChanged);
    assign(totalTrackersRemoved_, sum(totalTrackersRemoved_, result.removedCount()),
           &AppState::totalTrackersRemovedChanged);
    assign(cleanedToday_, sum(normalizedCleanedToday(), 1), &AppState::cleanedTodayChanged);
    DefaultsStore &defaults = services_.defaults;
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
    entry.setCleanedAt(moment);
    historyEntries_.prepend(entry);
    if (historyEntries_.size() > historyLimit)
        historyEntries_.resize(historyLimit);
    Q_EMIT historyEntriesChanged();
    services_.defaults.setData(historyEntriesKey, historyToJson(historyEntries_));
}

void AppState::write(const QString &text)
{
    services_.pasteboard.clear();
    services_.pasteboard.setString(text.toStdString());
    assign(lastError_, QString(), &AppState::lastErrorChanged);
}

void AppState::copyCleanedLink(const CleanHistoryEntry &entry)
{
    write(entry.cleanedText);
}

void AppState::restoreOriginalLink(const CleanHistoryEntry &entry)
{
    write(entry.originalText);
}

void AppState::addIgnoredHostFromLastResult()
{
    const std::optional<std::string> host = firstHost(lastResult_.cleanedText.toStdString());
    if (host && !ignoredHosts().contains(*host))
        setIgnoredDomainsText(IgnoredDomains::appending(ignoredDomainsText_, QString::fromStdString(*host)));
}

void AppState::clearHistory()
{
    assign(historyEntries_, {}, &AppState::historyEntriesChanged);
    services_.defaults.remove(historyEntriesKey);
}
