#pragma once

#include "TransferDeadline.h"

#include <VelmoraLinux/X11/XcbConnection.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QtGlobal>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// One reading of the plain text that the clipboard's owner offers.
//
// Asks the owner for TARGETS, stays away from a copy marked as secret, then converts the best text target
// there is, at once or by INCR. Whatever goes wrong, `done` gets nothing, once; destroying the reader is
// silent. `done` may destroy the reader.
class SelectionReader {
public:
    using Done = std::function<void(std::optional<std::string> text)>;

    // What is wanted of the owner.
    enum class Aim {
        text,
        permission, // Only whether its text may be read: an empty text says that it may.
    };

    // `time` is the server's time of the latest known change of owner.
    SelectionReader(XcbConnection &connection, Scheduler &scheduler, TransferLimits limits, Aim aim,
                    xcb_timestamp_t time, Done done);
    ~SelectionReader();
    Q_DISABLE_COPY_MOVE(SelectionReader)

    // Where the owner is to put its answer.
    [[nodiscard]] xcb_window_t requestor() const { return requestor_; }

    // Takes the window out of the reader's care if the owner has not answered yet: an owner that writes into
    // a window that is gone may die of it, and the user's copy with it. Otherwise nothing.
    [[nodiscard]] std::optional<xcb_window_t> releasePendingRequestor();

    void handleSelectionNotify(const xcb_selection_notify_event_t &event);
    void handlePropertyNotify(const xcb_property_notify_event_t &event);

private:
    enum class Step { targets, hint, text };

    // The whole of one answer.
    struct Answer {
        xcb_atom_t type = XCB_NONE;
        std::uint8_t format = 0;
        std::string bytes;
    };

    void convert(Step step, xcb_atom_t target);
    void fetch();
    void fetchRest();
    void receive(const xcb_get_property_reply_t *reply);
    void beginIncremental(const xcb_get_property_reply_t &reply);
    void use(const Answer &answer);
    void useTargets(const Answer &answer);
    void chooseTargets(const std::vector<xcb_atom_t> &offered, const std::vector<std::string> &names);
    void useText(const Answer &answer);
    void tryNextTarget();
    void finish(std::optional<std::string> text);

    XcbConnection &connection_;
    std::size_t mostBytes_;
    Aim aim_;
    xcb_timestamp_t time_;
    Done done_;
    xcb_window_t requestor_;
    Step step_ = Step::targets;
    xcb_atom_t target_ = XCB_NONE;
    std::vector<xcb_atom_t> targets_; // Still to be tried, the best one last.
    bool isPending_ = false;          // The owner was asked and has not answered.
    bool isIncremental_ = false;
    std::size_t received_ = 0; // Bytes of the present property, or of the present INCR chunk.
    Answer answer_;
    TransferDeadline deadline_;
    DelayedSteps steps_;
};
