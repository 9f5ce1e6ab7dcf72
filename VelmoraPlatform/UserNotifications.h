#pragma once

#include <QString>

#include <functional>

// Short messages that the desktop shows among those of other programs.
class UserNotifications {
public:
    struct Message {
        QString title;
        QString text;
        std::function<void()> activated; // The user clicked it. Not called after another message was posted.
    };

    virtual ~UserNotifications() = default;
    // Shows `message`; without effect on a desktop that shows none.
    virtual void post(Message message) = 0;
};
