#pragma once

#include "SelectionReadings.h"
#include "TransferLimits.h"

#include <VelmoraLinux/X11/XcbConnection.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QByteArray>
#include <QtGlobal>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// The secrets of X11 programs in a Wayland session.
//
// A compositor passes on what these programs copy, but not everywhere the mark by which a password manager asks not
// to be read: sway and KWin 6.3 pass on only names with a slash. So the owner of the X11 clipboard is asked itself,
// unless an offer has names that such a bridge drops. For what a Wayland program has copied that is the compositor,
// which answers at once; on KWin 5.27 it may be a program whose copy is no longer the present one.
class BridgedSecrets {
public:
    using Answer = std::function<void(bool mayBeRead)>;

    // Null without an X server: no program made for X11 can have copied anything then. An empty display name
    // stands for $DISPLAY.
    [[nodiscard]] static std::unique_ptr<BridgedSecrets>
    create(Scheduler &scheduler, const QByteArray &displayName = {}, TransferLimits limits = {});
    ~BridgedSecrets() = default;
    Q_DISABLE_COPY_MOVE(BridgedSecrets)

    // Whether what is offered under these names may be a copy whose mark was dropped.
    [[nodiscard]] static bool mayBeHidden(const std::vector<std::string> &offered);

    // Asks whether the present copy may be read. The answer comes from the event loop; a further question
    // makes the one before void. An owner that does not answer within the limits is left alone: no.
    void ask(Answer answer);
    void giveUp();

private:
    BridgedSecrets(std::unique_ptr<XcbConnection> connection, Scheduler &scheduler, TransferLimits limits);

    void handleEvent(const xcb_generic_event_t &event);
    void answerLater(bool mayBeRead);

    std::unique_ptr<XcbConnection> connection_;
    SelectionReadings readings_;
    Answer answer_; // Null while nothing is asked.
    DelayedSteps steps_;
};
