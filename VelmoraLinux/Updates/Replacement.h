#pragma once

#include "Installation.h"
#include "VerifiedArchive.h"

#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QString>

// Puts a new version in the place of the installed one, and back.
//
// The new version is made ready in a hidden place beside the installed one, wholly on disk, and then the two
// change places in a single step of the file system. Whatever moment this process is killed at, the installed
// path holds one complete version; the other one lies in the hidden place until `cleanUp`. Members wait for
// the disk: call them from a thread of their own.
class Replacement {
public:
    // `installation` is not managed.
    explicit Replacement(Installation installation);

    // Unpacks `archive` beside the installed version and makes sure that it is version `version` of this program.
    [[nodiscard]] UpdateOutcome prepare(VerifiedArchive &archive, const QString &version) const;
    // The prepared version takes the installed one's place, and the other way round when called again.
    [[nodiscard]] UpdateOutcome exchange() const;
    // Removes what an earlier update left: a half-made new version, or the old one once the new has started.
    // Files that are not ours stay.
    void cleanUp() const;

private:
    [[nodiscard]] UpdateOutcome prepareFolder(VerifiedArchive &archive, const QString &version) const;
    [[nodiscard]] UpdateOutcome prepareImage(VerifiedArchive &archive) const;
    [[nodiscard]] QString place(QStringView name) const;

    Installation installation_;
    QString hidden_; // Beside the target, so that both are in one file system.
};
