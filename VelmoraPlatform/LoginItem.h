#pragma once

#include <functional>

// Starts the application when the user logs in.
//
// The registration is never read back: what the views show is the user's stored choice.
class LoginItem {
public:
    using RefusalHandler = std::function<void()>;

    virtual ~LoginItem() = default;
    // Whether the application is now registered; registering twice is no error.
    [[nodiscard]] virtual bool registerItem() = 0;
    // Whether the application is no longer registered; there need not have been a registration.
    [[nodiscard]] virtual bool unregisterItem() = 0;
    // A back end that has to ask the user first returns true at once, and calls `handler` on the main thread
    // if the answer is no.
    virtual void setRefusalHandler(RefusalHandler handler) = 0;
};
