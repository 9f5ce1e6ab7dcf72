#pragma once

#include <functional>

// Starts the application when the user logs in.
//
// What is registered is never read back: the user's stored choice is the only truth that is shown.
class LoginItem {
public:
    using RefusalHandler = std::function<void()>;

    virtual ~LoginItem() = default;
    // Whether the application is now registered; registering twice is no error.
    [[nodiscard]] virtual bool registerItem() = 0;
    // Whether the application is no longer registered; there need not have been a registration.
    [[nodiscard]] virtual bool unregisterItem() = 0;
    // A system that has to ask somebody first says yes to the call and calls `handler`, on the main thread,
    // when the answer turns out to be no.
    virtual void setRefusalHandler(RefusalHandler handler) = 0;
};
