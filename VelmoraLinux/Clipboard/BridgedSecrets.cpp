#include "BridgedSecrets.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

std::unique_ptr<BridgedSecrets> BridgedSecrets::create(Scheduler &scheduler, const QByteArray &displayName,
                                                       TransferLimits limits)
{
    auto connection = XcbConnection::open(displayName);
    if (!connection)
        return nullptr;
    return std::unique_ptr<BridgedSecrets>(new BridgedSecrets(std::move(connection), scheduler, limits));
}

BridgedSecrets::BridgedSecrets(std::unique_ptr<XcbConnection> connection, Scheduler &scheduler,
                               TransferLimits limits)
    : connection_(std::move(connection))
    , readings_(*connection_, scheduler, limits)
    , steps_(scheduler)
{
    connection_->setEventHandler([this](const xcb_generic_event_t &event) { handleEvent(event); });
    // With the server all programs made for it have ended.
    connection_->setLostHandler([this] {
        readings_.abort();
        answerLater(true);
    });
}

bool BridgedSecrets::mayBeHidden(const std::vector<std::string> &offered)
{
    return std::all_of(offered.begin(), offered.end(),
                       [](const std::string &name) { return name.find('/') != std::string::npos; });
}

void BridgedSecrets::ask(Answer answer)
{
    giveUp();
    answer_ = std::move(answer);
    if (connection_->isLost())
        return answerLater(true);
    readings_.begin(
        SelectionReader::Aim::permission, XCB_CURRENT_TIME,
        [this](const std::optional<std::string> &permission) { answerLater(permission.has_value()); });
}

void BridgedSecrets::giveUp()
{
    steps_.startOver();
    readings_.abort();
    answer_ = nullptr;
}

void BridgedSecrets::answerLater(bool mayBeRead)
{
    steps_.after({}, [this, mayBeRead] {
        if (const Answer answer = std::exchange(answer_, nullptr))
            answer(mayBeRead);
    });
}

void BridgedSecrets::handleEvent(const xcb_generic_event_t &event)
{
    // An owner sends its answer itself; that a property has changed is believed only of the server.
    constexpr unsigned sentByProgram = 0x80;
    const unsigned type = event.response_type & ~sentByProgram;
    if (type == XCB_SELECTION_NOTIFY)
        readings_.handleSelectionNotify(reinterpret_cast<const xcb_selection_notify_event_t &>(event));
    else if (event.response_type == XCB_PROPERTY_NOTIFY)
        readings_.handlePropertyNotify(reinterpret_cast<const xcb_property_notify_event_t &>(event));
}
