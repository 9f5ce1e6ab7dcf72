#include "SelectionReadings.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t mostPendingRequestors = 8;

} // namespace

SelectionReadings::SelectionReadings(XcbConnection &connection, Scheduler &scheduler, TransferLimits limits)
    : connection_(connection)
    , scheduler_(scheduler)
    , limits_(limits)
{
}

void SelectionReadings::begin(SelectionReader::Aim aim, xcb_timestamp_t time, SelectionReader::Done done)
{
    const auto finish = [this, done = std::move(done)](std::optional<std::string> text) {
        const auto finished = std::move(reader_); // Lives to the end of its own call.
        keepPending(*finished);
        done(std::move(text));
    };
    reader_ = std::make_unique<SelectionReader>(connection_, scheduler_, limits_, aim, time, finish);
}

void SelectionReadings::abort()
{
    if (const auto aborted = std::move(reader_))
        keepPending(*aborted);
    for (; pendingRequestors_.size() > mostPendingRequestors; pendingRequestors_.pop_front())
        connection_.destroyWindow(pendingRequestors_.front());
}

void SelectionReadings::keepPending(SelectionReader &reader)
{
    if (const auto window = reader.releasePendingRequestor())
        pendingRequestors_.push_back(*window);
}

void SelectionReadings::handleSelectionNotify(const xcb_selection_notify_event_t &event)
{
    if (reader_ && event.requestor == reader_->requestor())
        return reader_->handleSelectionNotify(event);
    const auto pending = std::find(pendingRequestors_.begin(), pendingRequestors_.end(), event.requestor);
    if (pending == pendingRequestors_.end())
        return;
    connection_.destroyWindow(*pending);
    pendingRequestors_.erase(pending);
}

bool SelectionReadings::handlePropertyNotify(const xcb_property_notify_event_t &event)
{
    if (!reader_ || event.window != reader_->requestor())
        return false;
    reader_->handlePropertyNotify(event);
    return true;
}
