#pragma once

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

// Keeps the installed program up to date, on a schedule of its own and on request.
//
// Exists only where the bundle carries a complete update configuration, and then as long as the process. What
// it has to say goes through an UpdateUserDriver.
class Updater {
public:
    using ChangeHandler = std::function<void()>;

    virtual ~Updater() = default;
    // A check the user asked for. While something is on show, brings that to the front instead.
    virtual void checkForUpdates() = 0;
    // False while a check works without showing anything.
    [[nodiscard]] virtual bool canCheckForUpdates() const = 0;
    // `handler` runs on the main thread after `canCheckForUpdates` has changed.
    virtual void setChangeHandler(ChangeHandler handler) = 0;
};

// The update configuration of the bundle.
struct UpdateConfiguration {
    QUrl feed;
    QString publicKey; // As it stands in the bundle; the updater judges whether it is a key.
};

class UpdateUserDriver;

// Makes the updater and starts it: from then on it checks on its schedule and shows what it has to say on
// `driver`, which outlives it.
using UpdaterFactory = std::function<std::unique_ptr<Updater>(const UpdateConfiguration &configuration,
                                                              UpdateUserDriver &driver)>;
