#pragma once

#include "BridgedSecrets.h"
#include "DataControlDevice.h"
#include "OfferReader.h"
#include "PipeWriters.h"
#include "TransferLimits.h"

#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Pasteboard.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QByteArray>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The clipboard of a Wayland compositor that lets programs without focus see it.
//
// Our own writes are known again by a MIME type with a fresh number. There is no time stamp as on X11: what
// has arrived is looked at right before a write, but a copy made in the very millisecond of it is
// overwritten. When the compositor goes away, or takes the clipboard from us, it is looked for again for as
// long as we live, and nothing can be reached meanwhile.
//
// The text of a program ends with it on such a desktop. So on our end `keeper`, a program that behaves as
// ClipboardKeeper says, gets our text; it has 200 ms to take over.
class DataControlPasteboard final : public Pasteboard {
public:
    struct Options {
        QByteArray display = {}; // Empty: $WAYLAND_DISPLAY.
        TransferLimits limits = {};
        QString keeper = {}; // Empty: our text ends with us.
    };

    // Null when no compositor answers, or when it offers no such clipboard.
    [[nodiscard]] static std::unique_ptr<DataControlPasteboard> create(Scheduler &scheduler, Options options);
    ~DataControlPasteboard() override;
    Q_DISABLE_COPY_MOVE(DataControlPasteboard)

    // From now on a copy is read when the program that made it for X11 allows it as well. Null: there are no
    // such programs.
    void setBridgedSecrets(std::unique_ptr<BridgedSecrets> secrets) { secrets_ = std::move(secrets); }

    [[nodiscard]] Reach reach() const override;

    void setReachHandler(ReachHandler handler) override { reachHandler_ = std::move(handler); }

    [[nodiscard]] qint64 changeCount() const override { return changeCount_; }

    void readString(TextHandler done) override;
    void clear() override;
    void setString(std::string text, OutcomeHandler outcome) override;
    using Pasteboard::setString;

    [[nodiscard]] bool notifiesChanges() const override { return true; }

    void setChangeHandler(ChangeHandler handler) override { changeHandler_ = std::move(handler); }

    void setLostHandler(LostHandler) override {} // A compositor may come back.

private:
    // Our own text, or our own emptiness, from the write until somebody else takes the clipboard.
    struct Own {
        std::shared_ptr<const std::string> text; // Null: cleared.
        std::string mark = {};
        bool isConfirmed = false; // The compositor has told us of our own offer.
    };

    DataControlPasteboard(Scheduler &scheduler, Options options);

    bool connect();
    void disconnect();
    void reconnectLater();
    void handleSelection(bool isInitial);
    void handleCancelled();
    void countCopy();
    void notifyLater();
    void settle(bool isOurs);
    void loseOwn();
    void beginTakeOver();
    void takeOver(std::shared_ptr<const std::string> text);
    void beginReading();
    void readOffer();
    void abortReading();
    void answerReaders(const std::optional<std::string> &text);
    void handOver();

    Scheduler &scheduler_;
    Options options_;
    PipeWriters writers_;
    std::unique_ptr<WaylandConnection> connection_; // Null while there is no compositor.
    std::unique_ptr<DataControlDevice> device_;     // Goes before the connection.
    std::chrono::nanoseconds retryDelay_;

    const std::string markOfOurs_; // What the marks of this object's texts begin with.
    qint64 changeCount_ = 0;
    std::optional<Own> own_;
    OutcomeHandler outcome_; // Of the latest write, until it is known.
    bool isJustCleared_ = false;
    bool isTakingOver_ = false;
    bool isOvertaken_ = false; // A copy was found right before the present write: it wins.
    std::unique_ptr<BridgedSecrets> secrets_;
    std::unique_ptr<OfferReader> reader_;
    std::vector<TextHandler> waiting_;

    ChangeHandler changeHandler_;
    ReachHandler reachHandler_;
    DelayedSteps connectionSteps_; // Of the present connection.
    DelayedSteps steps_;
};
