#pragma once

#include <VelmoraMac/Shell/CleaningNotices.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Pasteboard.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QObject>
#include <QPointer>
#include <QString>
#include <qqmlintegration.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

class AppState;

namespace velmora {
class LinkCleaner;
}

// Finds every copy and has its links cleaned. Main thread only.
//
// It reads the clipboard's change count on a grid of 0.22 s that begins with start(). A pasteboard that reports
// its changes is read only at the tick after a change; one that does not is polled at every tick. Each change
// is handled once: what is copied while cleaning is paused is never cleaned later. A cleaning is recorded and
// shown when the clipboard is ours, so one that a newer copy overtakes leaves no trace.
class ClipboardMonitor : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("There is one monitor, made when the application starts")
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)

public:
    static constexpr std::chrono::milliseconds interval{220};

    // All arguments outlive the monitor.
    ClipboardMonitor(Pasteboard &pasteboard, Scheduler &scheduler, CleaningNotices &notices,
                     QObject *parent = nullptr);
    ~ClipboardMonitor() override;

    // Begins to watch; there is no end, and a second call does nothing. What is on the clipboard now is never
    // cleaned. The monitor stops working when `state` is destroyed.
    void start(AppState &state);

    [[nodiscard]] bool isRunning() const { return isRunning_; }

Q_SIGNALS:
    void isRunningChanged();

private:
    void waitForNextTick();
    void tick();
    void inspectClipboard();
    void inspect(const std::string &text);
    void writeCleanedResult(const CleaningResult &result, std::string cleanedText);
    const velmora::LinkCleaner &cleaner();

    Pasteboard &pasteboard_;
    Scheduler &scheduler_;
    CleaningNotices &notices_;
    DelayedSteps steps_;
    QPointer<AppState> state_;
    std::chrono::nanoseconds gridStart_{0};
    qint64 lastChangeCount_;
    bool isRunning_ = false;
    bool isWaiting_ = false;
    // Prepared when first needed, and again when the ignored domains are no longer these.
    std::unique_ptr<const velmora::LinkCleaner> cleaner_;
    QString cleanerDomains_;
};
