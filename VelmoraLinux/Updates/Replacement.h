#pragma once

#include "Installation.h"
#include "VerifiedArchive.h"

#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QString>

#include <utility>

// Exchanges the installed version with the one in the hidden folder, without allocating memory.
class Exchange {
public:
    Exchange(FolderHandle parent, FolderHandle hidden, QByteArray target)
        : parent_(std::move(parent))
        , hidden_(std::move(hidden))
        , target_(std::move(target))
    {
    }

    [[nodiscard]] bool isOpen() const { return parent_.isOpen() && hidden_.isOpen(); }

    [[nodiscard]] int parent() const { return parent_.descriptor(); }

    [[nodiscard]] int hidden() const { return hidden_.descriptor(); }

    // Some file systems cannot do this; the reason of a failure is in errno.
    [[nodiscard]] bool run() const;

private:
    FolderHandle parent_;
    FolderHandle hidden_;
    QByteArray target_;
};

// Puts a new version in the place of the installed one, and back.
//
// The new version is unpacked into a hidden folder beside the installed one and synced to the disk; then the
// two are exchanged atomically. If this process is killed at any moment, the installed path holds one
// complete version; the other one stays in the hidden folder until `cleanUp`. The hidden folder is used only
// when it is a real folder of this user with mode 0700. Members wait for the disk: call them from a thread of
// their own.
class Replacement {
public:
    // `installation` is not managed.
    explicit Replacement(Installation installation);

    // Unpacks `archive` beside the installed version and makes sure that it is version `version` of this program.
    [[nodiscard]] UpdateOutcome prepare(VerifiedArchive &archive, const QString &version) const;
    // The prepared version takes the installed one's place, and the other way round when called again.
    [[nodiscard]] UpdateOutcome exchange() const;
    [[nodiscard]] Exchange preparedExchange() const;
    // Removes what an earlier update left: a half-made new version, or the old one once the new has started.
    // Files that are not ours stay.
    void cleanUp() const;

private:
    [[nodiscard]] FolderHandle hiddenFolder() const;
    [[nodiscard]] UpdateOutcome prepareFolder(VerifiedArchive &archive, const QString &version,
                                              const FolderHandle &hidden) const;

    Installation installation_;
    QString parent_;    // The folder that contains the target.
    QByteArray target_; // Its name in there.
    QByteArray hidden_; // The name of the hidden folder beside it, so that both are in one file system.
};
