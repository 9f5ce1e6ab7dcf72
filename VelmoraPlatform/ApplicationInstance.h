#pragma once

#include <functional>

// Makes sure that one user runs one Velmora; a second start re-opens the first.
class ApplicationInstance {
public:
    enum class Role {
        first,      // This process is the application.
        second,     // The application runs already, was asked to re-open, and this process should end.
        unanswered, // The application runs already but does not answer; this process should end.
    };
    // What the user can ask of the running application without its icon.
    enum class Action { settings, popover, cleanLink, pauseOrResume, quit };
    using ReopenHandler = std::function<void()>;
    using ActionHandler = std::function<void(Action)>;

    virtual ~ApplicationInstance() = default;
    // Called once, at start. When the role cannot be determined, this process is the first.
    [[nodiscard]] virtual Role claim() = 0;
    // `handler` runs on the main thread whenever the running application is started again.
    virtual void setReopenHandler(ReopenHandler handler) = 0;
    // `handler` runs on the main thread whenever one of the actions was chosen.
    virtual void setActionHandler(ActionHandler handler) = 0;
};
