#pragma once

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

// Keeps the installed program up to date, on a schedule of its own and on request.
//
// Exists only when the bundle contains a complete update configuration, and then as long as the process. Its
// messages go through an UpdateUserDriver.
class Updater {
public:
    using ChangeHandler = std::function<void()>;

    virtual ~Updater() = default;
    // A check that the user requested. While something is shown, brings that to the front instead.
    virtual void checkForUpdates() = 0;
    // False while a check works without showing anything.
    [[nodiscard]] virtual bool canCheckForUpdates() const = 0;
    // `handler` runs on the main thread after `canCheckForUpdates` has changed.
    virtual void setChangeHandler(ChangeHandler handler) = 0;
};

// The update configuration of the bundle.
struct UpdateConfiguration {
    QUrl feed;
    QString publicKey; // As written in the bundle; the updater decides whether it is valid.
};

class UpdateUserDriver;

// Creates the updater and starts it: from then on it checks on its schedule and shows its messages on
// `driver`, which outlives it.
using UpdaterFactory = std::function<std::unique_ptr<Updater>(const UpdateConfiguration &configuration,
                                                              UpdateUserDriver &driver)>;
