#pragma once

#include <VelmoraMac/State/AppTypes.h>
#include <VelmoraMac/State/CleanHistoryEntry.h>
#include <VelmoraMac/State/CleaningResult.h>
#include <VelmoraMac/Telemetry/TelemetrySink.h>
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

// The same with a setter that everybody may call and whose body stands in AppState.cpp.
#define VELMORA_SETTING(Type, name, setter, initial)                                                         \
    Q_PROPERTY(Type name READ name WRITE setter NOTIFY name##Changed)                                        \
public:                                                                                                      \
    const Type &name() const                                                                                 \
    {                                                                                                        \
        return name##_;                                                                                      \
    }                                                                                                        \
    void setter(const Type &value);                                                                          \
    Q_SIGNAL void name##Changed();                                                                           \
                                                                                                             \
private:                                                                                                     \
    Type name##_ = initial;

// A counter. QML knows it as a double, which is exact up to 2^53.
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

    VELMORA_SETTING(Velmora::AppTab, activeAppTab, setActiveAppTab, AppTab::general) // Not persisted.
    VELMORA_SETTING(bool, autoCleanEnabled, setAutoCleanEnabled, true)               // False: paused.
    VELMORA_SETTING(bool, launchAtLoginEnabled, setLaunchAtLoginEnabled, false)
    VELMORA_SETTING(QString, ignoredDomainsText, setIgnoredDomainsText, {})
    VELMORA_SETTING(bool, askBeforeCleaningEnabled, setAskBeforeCleaningEnabled, false)
    VELMORA_SETTING(bool, telemetryEnabled, setTelemetryEnabled, true)
    VELMORA_SETTING(Velmora::AppLanguage, language, setLanguage, AppLanguage::english)
    VELMORA_SETTING(Velmora::VelmoraTheme, appTheme, setAppTheme, VelmoraTheme::graphite)
    VELMORA_COUNTER(totalCleaned)
    VELMORA_COUNTER(totalTrackersRemoved)
    VELMORA_COUNTER(cleanedToday) // Of the day of the last cleaning or launch: nothing resets it at midnight.
    Q_PROPERTY(bool hasLastResult READ hasLastResult NOTIFY lastResultChanged)
    // The latest cleaning since the start; all its texts are empty while there was none (see hasLastResult).
    VELMORA_OBSERVABLE(CleaningResult, lastResult, {})
    VELMORA_OBSERVABLE(QDateTime, lastCleanedAt, {}) // Invalid while there was no cleaning.
    VELMORA_OBSERVABLE(QString, lastError, {})       // For the user's eyes; empty when all is well.
    VELMORA_OBSERVABLE(QList<CleanHistoryEntry>, historyEntries, {}) // Newest first, at most 30.

public:
    // What the state is kept in and acts through; all outlive it.
    struct Services {
        DefaultsStore &defaults;
        Pasteboard &pasteboard;
        LoginItem &loginItem;
        const BundleInfo &bundle;
        const WallClock &clock;
        TelemetrySink &telemetry;
    };

    explicit AppState(const Services &services, QObject *parent = nullptr);
    ~AppState() override;

    [[nodiscard]] bool hasLastResult() const { return lastCleanedAt_.isValid(); }

    // The hosts that are never cleaned, in lower case, as UTF-8.
    [[nodiscard]] std::set<std::string> ignoredHosts() const;

    // What every event says about the settings and, in coarse ranges, the counters; never anything the user
    // copied. The cleaning mode is "manual" while cleaning is paused, else "ask" or "auto".
    [[nodiscard]] TelemetrySink::Properties telemetryProperties() const;

    // Counts a cleaning that was written to the clipboard, enters it into the history and reports it.
    void record(const CleaningResult &result);

    // Both put a text back on the clipboard, where it counts as a new copy: a restored original is cleaned
    // again.
    Q_INVOKABLE void copyCleanedLink(const CleanHistoryEntry &entry);
    Q_INVOKABLE void restoreOriginalLink(const CleanHistoryEntry &entry);
    // Exempts the host of the first link of the last result from cleaning.
    Q_INVOKABLE void addIgnoredHostFromLastResult();
    Q_INVOKABLE void clearHistory();

private:
    template<typename Value>
    bool assign(Value &field, const Value &value, void (AppState::*changed)());
    void load();
    void report(DefaultsStore::Problem problem);
    void reportMissingClipboard();
    void applyLaunchAtLogin();
    void reportRefusedLoginItem();
    void write(const QString &text);
    void count(const CleaningResult &result);
    void remember(const CleaningResult &result, const QDateTime &moment);
    [[nodiscard]] QString todayKey() const;
    qint64 normalizedCleanedToday();

    Services services_;
    // Written by every cleaning and read by nothing; they must not gain behaviour.
    QString lastOriginalClipboardValue_;
    QString lastCleanedClipboardValue_;
};
