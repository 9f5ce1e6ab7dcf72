#pragma once

#include <VelmoraPlatform/UserNotifications.h>

#include <vector>

// Keeps the messages that were posted.
class RecordingNotifications final : public UserNotifications {
public:
    void post(Message message) override { messages.push_back(std::move(message)); }

    std::vector<Message> messages;
};
