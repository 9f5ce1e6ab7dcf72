#pragma once

#include <QtGlobal>

#include <memory>

// What a file holds that gzip or xz has compressed; its first bytes tell which.
class DecompressedFile {
public:
    // Takes over the descriptor, and reads from its beginning. Nothing when that cannot be done.
    [[nodiscard]] static std::unique_ptr<DecompressedFile> open(int descriptor);

    DecompressedFile() = default;
    virtual ~DecompressedFile() = default;
    DecompressedFile(const DecompressedFile &) = delete;
    DecompressedFile &operator=(const DecompressedFile &) = delete;

    // Whether exactly that many bytes followed; if not, the rest cannot be read either.
    [[nodiscard]] virtual bool read(char *bytes, qsizetype size) = 0;
};
