#pragma once

#include "VerifiedArchive.h"

#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QString>

// Unpacks a signed tarball: gzip around plain ustar, with one folder at its top.
//
// Holds to the little that our own packages need. Regular files and folders with plain relative names are
// written; any link, device, extension, doubled, absolute or climbing name, and any size beyond the limits
// refuses the archive. Everything is on the disk when `unpack` returns.
class ArchiveUnpacker {
public:
    struct Limits {
        qint64 bytes = 1LL << 30; // Of all files together.
        int entries = 20'000;
    };

    explicit ArchiveUnpacker(Limits limits)
        : limits_(limits)
    {
    }

    // Puts the contents of the archive's top folder into `folder`, which must not exist yet. After a failure
    // whatever was written so far lies there.
    [[nodiscard]] UpdateProblem unpack(VerifiedArchive &archive, const QString &folder) const;

private:
    Limits limits_;
};
