#pragma once

#include <VelmoraMac/State/AppTypes.h>
#include <VelmoraPlatform/BundleInfo.h>
#include <VelmoraPlatform/Updater.h>

#include <QObject>
#include <qqmlintegration.h>

#include <memory>

// The application's access to software updates: an updater where the bundle has a complete update
// configuration, otherwise none. Every view that offers a check asks here.
class UpdateController : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the services")
    Q_PROPERTY(bool hasUpdater READ hasUpdater CONSTANT)
    Q_PROPERTY(bool canCheckForUpdates READ canCheckForUpdates NOTIFY canCheckForUpdatesChanged)

public:
    using MakeUpdater = std::function<std::unique_ptr<Updater>(const UpdateConfiguration &)>;

    // Reads the configuration once; with a complete one makes the updater, which starts at once.
    UpdateController(const BundleInfo &bundle, const MakeUpdater &makeUpdater, QObject *parent = nullptr);

    // False without a complete update configuration, until the end of the process.
    [[nodiscard]] bool hasUpdater() const { return updaterController_ != nullptr; }

    // False without an updater.
    [[nodiscard]] bool canCheckForUpdates() const;
    // A check on the user's behalf; does nothing without an updater.
    Q_INVOKABLE void checkForUpdates();
    // The sentence about updates in the settings.
    Q_INVOKABLE QString statusText(Velmora::AppLanguage language) const;

Q_SIGNALS:
    void canCheckForUpdatesChanged();

private:
    std::unique_ptr<Updater> updaterController_;
};
