#pragma once

#include "SelectionReader.h"
#include "TransferLimits.h"

#include <VelmoraLinux/X11/XcbConnection.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QtGlobal>

#include <deque>
#include <memory>

// Readings of an X server's clipboard, one at a time. The events of the connection have to be handed on.
//
// The window of a reading that was given up stays until the owner has answered: one that writes into a window
// that is gone may die of it, and the user's copy with it.
class SelectionReadings {
public:
    SelectionReadings(XcbConnection &connection, Scheduler &scheduler, TransferLimits limits);
    ~SelectionReadings() = default;
    Q_DISABLE_COPY_MOVE(SelectionReadings)

    [[nodiscard]] bool isReading() const { return reader_ != nullptr; }

    // `done` gets the outcome once, unless the reading is aborted; it may begin the next one.
    void begin(SelectionReader::Aim aim, xcb_timestamp_t time, SelectionReader::Done done);
    void abort();

    void handleSelectionNotify(const xcb_selection_notify_event_t &event);
    // False when the property is none of a reading's.
    bool handlePropertyNotify(const xcb_property_notify_event_t &event);

private:
    void keepPending(SelectionReader &reader);

    XcbConnection &connection_;
    Scheduler &scheduler_;
    TransferLimits limits_;
    std::unique_ptr<SelectionReader> reader_;
    std::deque<xcb_window_t> pendingRequestors_; // Of readings given up before the owner answered.
};
