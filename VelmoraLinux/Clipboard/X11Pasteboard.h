#pragma once

#include "SelectionReadings.h"
#include "SelectionServer.h"

#include <VelmoraLinux/X11/XcbConnection.h>
#include <VelmoraPlatform/Pasteboard.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QByteArray>

#include <memory>
#include <optional>
#include <string>
#include <vector>

// The CLIPBOARD selection of an X server.
//
// Every change of its owner is one step of the count. Before a write the server is asked for its time: a copy
// that it tells of before the answer is newer than what we know, and wins; one that comes between the answer
// and our claim has a later time, for which the server turns us down. A claim that is turned down without a
// newer copy is made again. On its end it hands the text to a clipboard manager, if there is one, for which it
// waits at most 150 ms.
class X11Pasteboard final : public Pasteboard {
public:
    // Nothing when there is no server or it lacks XFixes. Waits for the server's answers; every copy made later is
    // seen. An empty display name stands for $DISPLAY. `reach`: what the session lets this server see.
    [[nodiscard]] static std::unique_ptr<X11Pasteboard> create(Scheduler &scheduler,
                                                               const QByteArray &displayName = {},
                                                               TransferLimits limits = {},
                                                               Reach reach = Reach::all);
    ~X11Pasteboard() override;
    Q_DISABLE_COPY_MOVE(X11Pasteboard)

    [[nodiscard]] Reach reach() const override { return reach_; }

    void setReachHandler(ReachHandler) override {} // The session stays what it is.

    [[nodiscard]] qint64 changeCount() const override { return changeCount_; }

    void readString(TextHandler done) override;
    void clear() override;
    void setString(std::string text, OutcomeHandler outcome) override;
    using Pasteboard::setString;

    [[nodiscard]] bool notifiesChanges() const override { return true; }

    void setChangeHandler(ChangeHandler handler) override { changeHandler_ = std::move(handler); }

    void setLostHandler(LostHandler handler) override { lostHandler_ = std::move(handler); }

private:
    enum class Ownership {
        none,
        prepared, // The server was asked for its time.
        claimed,  // Asked for, and the server has not answered yet.
        ours,
    };

    X11Pasteboard(std::unique_ptr<XcbConnection> connection, Scheduler &scheduler, TransferLimits limits,
                  Reach reach);

    void handleEvent(const xcb_generic_event_t &event);
    void handleOwnerChange(const xcb_generic_event_t &event);
    void handleSelectionClear(const xcb_generic_event_t &event);
    void handleSelectionNotify(const xcb_selection_notify_event_t &event);
    void handlePropertyNotify(const xcb_property_notify_event_t &event);
    void handleLoss();
    [[nodiscard]] bool isBeforeClaim(const xcb_generic_event_t &event) const;

    void takeOver(std::optional<std::string> text);
    void askServerTime();
    void claim(xcb_timestamp_t time);
    void settleClaim(xcb_window_t owner);
    void giveUpOwnership();
    void settle(bool isOurs);
    void beginReading();
    void abortReading();
    void answerReaders(const std::optional<std::string> &text);
    void handOver();

    std::unique_ptr<XcbConnection> connection_;
    Reach reach_;
    SelectionServer server_;
    xcb_window_t window_;
    qint64 changeCount_ = 0;
    xcb_timestamp_t latestChange_ = XCB_CURRENT_TIME; // When the owner changed, as far as we know.

    Ownership ownership_ = Ownership::none;
    std::uint32_t claimSequence_ = 0; // The request that took the clipboard; events tell what they follow.
    int claims_ = 0;                  // Of the present write.
    bool isOvertaken_ = false;        // Somebody else took the clipboard after our claim was sent.
    bool isJustCleared_ = false;
    OutcomeHandler outcome_; // Of the latest write, until it is known.

    SelectionReadings readings_;
    std::vector<TextHandler> waiting_;
    bool isHandedOver_ = false;

    ChangeHandler changeHandler_;
    LostHandler lostHandler_;
};
