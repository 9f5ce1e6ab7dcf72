#pragma once

#include <VelmoraMac/State/AppTypes.h>
#include <VelmoraMac/State/CleanHistory.h>
#include <VelmoraMac/State/CleaningResult.h>
#include <VelmoraMac/State/StoredValue.h>
#include <VelmoraMac/Telemetry/TelemetrySink.h>
#include <VelmoraMac/Texts/LocalizedStrings.h>
#include <VelmoraPlatform/BundleInfo.h>
#include <VelmoraPlatform/DefaultsStore.h>
#include <VelmoraPlatform/LoginItem.h>
#include <VelmoraPlatform/Pasteboard.h>
#include <VelmoraPlatform/WallClock.h>

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <qqmlintegration.h>

#include <set>
#include <string>

// One observable property in one line; only AppState itself changes it.
// NOLINTBEGIN(cppcoreguidelines-macro-usage): moc reads what these expand to, a template cannot declare
// properties
#define VELMORA_OBSERVABLE(Type, name, initial)                                                              \
    Q_PROPERTY(Type name READ name NOTIFY name##Changed)                                                     \
public:                                                                                                      \
    const Type &name() const                                                                                 \
    {                                                                                                        \
        return name##_;                                                                                      \
    }                                                                                                        \
    Q_SIGNAL void name##Changed();                                                                           \
                                                                                                             \
private:                                                                                                     \
    Type name##_ = initial;

// A setting, complete in one line: a property that is stored under its own name and begins with what is
// stored there, else with `initial`. Every assignment stores the value, also the same one, and then calls
// reaction(const Type &before); `noReaction` where nothing else happens.
#define VELMORA_SETTING(Type, name, setter, initial, reaction)                                               \
    Q_PROPERTY(Type name READ name WRITE setter NOTIFY name##Changed)                                        \
public:                                                                                                      \
    const Type &name() const                                                                                 \
    {                                                                                                        \
        return name##_;                                                                                      \
    }                                                                                                        \
    void setter(const Type &value)                                                                           \
    {                                                                                                        \
        const Type before = name##_;                                                                         \
        assign(name##_, value, &AppState::name##Changed);                                                    \
        StoredValue::write(dependencies_.defaults, u"" #name, value);                                        \
        reaction(before);                                                                                    \
    }                                                                                                        \
    Q_SIGNAL void name##Changed();                                                                           \
                                                                                                             \
private:                                                                                                     \
    Type name##_ = StoredValue::read<Type>(dependencies_.defaults, u"" #name, initial);

// A counter. In QML it is a double, which is exact up to 2^53.
#define VELMORA_COUNTER(name)                                                                                \
    Q_PROPERTY(double name READ name NOTIFY name##Changed)                                                   \
public:                                                                                                      \
    qint64 name() const                                                                                      \
    {                                                                                                        \
        return name##_;                                                                                      \
    }                                                                                                        \
    Q_SIGNAL void name##Changed();                                                                           \
                                                                                                             \
private:                                                                                                     \
    qint64 name##_ = 0;

// NOLINTEND(cppcoreguidelines-macro-usage)

// Every setting and every counter of the application, observable. Main thread only.
//
// Each setter persists at once, on every assignment, and reports an event only when the value changed.
// Creating the object loads all values and runs no setter.
class AppState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("There is one state, made when the application starts")

public:
    // All outlive the state.
    struct Dependencies {
        DefaultsStore &defaults;
        Pasteboard &pasteboard;
        LoginItem &loginItem;
        const BundleInfo &bundle;
        const WallClock &clock;
        TelemetrySink &telemetry;
    };

private:
    Dependencies dependencies_; // Before the settings, which are read from it.

    VELMORA_SETTING(bool, autoCleanEnabled, setAutoCleanEnabled, true, reportAutoClean) // False: paused.
    VELMORA_SETTING(bool, launchAtLoginEnabled, setLaunchAtLoginEnabled, false, applyLaunchAtLogin)
    VELMORA_SETTING(QString, ignoredDomainsText, setIgnoredDomainsText, {}, reportIgnoredDomains)
    VELMORA_SETTING(bool, askBeforeCleaningEnabled, setAskBeforeCleaningEnabled, false, noReaction)
    VELMORA_SETTING(bool, telemetryEnabled, setTelemetryEnabled, true, noReaction)
    VELMORA_SETTING(Velmora::AppLanguage, language, setLanguage, LocalizedStrings::systemDefault(),
                    reportLanguage)
    VELMORA_SETTING(Velmora::VelmoraTheme, appTheme, setAppTheme, VelmoraTheme::graphite, reportTheme)
    // The tab of the settings window; not stored.
    Q_PROPERTY(
        Velmora::AppTab activeAppTab READ activeAppTab WRITE setActiveAppTab NOTIFY activeAppTabChanged)
    VELMORA_COUNTER(totalCleaned)
    VELMORA_COUNTER(totalTrackersRemoved)
    VELMORA_COUNTER(cleanedToday) // Of the day of the last cleaning or launch: nothing resets it at midnight.
    // Conditions that last, for as long as they do. The views say what they mean.
    Q_PROPERTY(Velmora::ClipboardReach clipboardReach READ clipboardReach NOTIFY clipboardReachChanged)
    VELMORA_OBSERVABLE(bool, settingsNotSaved, false) // They are kept in memory only.
    VELMORA_OBSERVABLE(bool, settingsSetAside, false) // The stored ones were damaged; new ones were begun.
    Q_PROPERTY(bool hasLastResult READ hasLastResult NOTIFY lastResultChanged)
    // The latest cleaning since the start; all its texts are empty while there was none (see hasLastResult).
    VELMORA_OBSERVABLE(CleaningResult, lastResult, {})
    VELMORA_OBSERVABLE(QDateTime, lastCleanedAt, {}) // Invalid while there was no cleaning.
    // The outcome of the last action, a sentence for the user; empty when it succeeded.
    VELMORA_OBSERVABLE(QString, lastError, {})
    Q_PROPERTY(QList<CleanHistoryEntry> historyEntries READ historyEntries NOTIFY historyEntriesChanged)

public:
    explicit AppState(const Dependencies &dependencies, QObject *parent = nullptr);
    ~AppState() override;

    [[nodiscard]] AppTab activeAppTab() const { return activeAppTab_; }

    void setActiveAppTab(AppTab tab);
    Q_SIGNAL void activeAppTabChanged();

    [[nodiscard]] ClipboardReach clipboardReach() const;
    Q_SIGNAL void clipboardReachChanged();

    // Newest first, at most 30.
    [[nodiscard]] const QList<CleanHistoryEntry> &historyEntries() const { return history_.entries(); }

    Q_SIGNAL void historyEntriesChanged();

    // For views with a text of their own to copy or paste.
    [[nodiscard]] Pasteboard &pasteboard() const { return dependencies_.pasteboard; }

    [[nodiscard]] bool hasLastResult() const { return lastCleanedAt_.isValid(); }

    // The hosts that are never cleaned, in lower case, as UTF-8.
    [[nodiscard]] std::set<std::string> ignoredHosts() const;

    // What every event says about the settings and, in coarse ranges, the counters; never anything the user
    // copied. The cleaning mode is "manual" while cleaning is paused, else "ask" or "auto".
    [[nodiscard]] TelemetrySink::Properties telemetryProperties() const;

    // Ends the program when a counter has no room for the result: asked before the clipboard is taken.
    void requireRoomFor(const CleaningResult &result) const;
    // Counts a cleaning that was written to the clipboard, enters it into the history and reports it.
    void record(const CleaningResult &result);

    // Both write a text to the clipboard, where it counts as a new copy: a restored original is cleaned again. A
    // text of which only the beginning is kept is not written; `lastError` says so.
    Q_INVOKABLE void copyCleanedLink(const CleanHistoryEntry &entry);
    Q_INVOKABLE void restoreOriginalLink(const CleanHistoryEntry &entry);
    // Exempts the host of the first link of the last result from cleaning.
    Q_INVOKABLE void addIgnoredHostFromLastResult();
    Q_INVOKABLE void clearHistory();

private:
    template<typename Value>
    bool assign(Value &field, const Value &value, void (AppState::*changed)())
    {
        if (field == value)
            return false;
        field = value;
        (this->*changed)();
        return true;
    }

    // The reactions of the settings, each with the value before.
    template<typename Value>
    void noReaction(const Value &)
    {
    }

    void reportAutoClean(bool before);
    void applyLaunchAtLogin(bool before);
    void reportIgnoredDomains(const QString &before);
    void reportLanguage(AppLanguage before);
    void reportTheme(VelmoraTheme before);

    [[nodiscard]] QString t(const QString &english, const QString &german) const;
    void setLastError(const QString &text);
    void report(DefaultsStore::Problem problem);
    void reportRefusedLoginItem();
    void write(const QString &text, bool isWhole);
    void count(const CleaningResult &result);
    void remember(const CleaningResult &result, const QDateTime &moment);
    [[nodiscard]] QString todayKey() const;
    void loadStatistics();
    qint64 normalizedCleanedToday();

    CleanHistory history_;
    AppTab activeAppTab_ = AppTab::general;
    // Written by every cleaning and read by nothing; they must not gain behaviour.
    QString lastOriginalClipboardValue_;
    QString lastCleanedClipboardValue_;
};
