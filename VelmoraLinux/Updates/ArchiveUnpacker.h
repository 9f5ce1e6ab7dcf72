#pragma once

#include "FolderHandle.h"
#include "VerifiedArchive.h"

#include <VelmoraPlatform/UpdateUserDriver.h>

// Unpacks a signed tarball: gzip or xz around plain ustar, with one folder at its top.
//
// Accepts only what our own packages contain: regular files and folders with plain relative names. Any link,
// device or extension header, any duplicate or absolute name or one with "..", and any size beyond the limits
// refuses the archive. Everything is synced to the disk when `unpack` returns.
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

    // Puts the contents of the archive's top folder into `folder`, which is empty. After a failure the files
    // written so far are left there.
    [[nodiscard]] UpdateOutcome unpack(VerifiedArchive &archive, const FolderHandle &folder) const;

private:
    Limits limits_;
};
