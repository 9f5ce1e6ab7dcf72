#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>
#include <optional>

// The public key of every archive's signature: 32 bytes, Ed25519.
class UpdateKey {
public:
    // Nothing when `base64`, white space around it aside, is not the base64 of 32 bytes.
    [[nodiscard]] static std::optional<UpdateKey> fromBase64(const QString &base64);

    [[nodiscard]] const QByteArray &bytes() const { return bytes_; }

private:
    explicit UpdateKey(QByteArray bytes)
        : bytes_(std::move(bytes))
    {
    }

    QByteArray bytes_;
};

// An archive whose length and Ed25519 signature have been verified. The file is kept open from then on.
//
// Functions that install take this type, so nothing unverified can be unpacked. The file must be in a folder
// that only the user can write to.
class VerifiedArchive {
public:
    // Reads the whole file. Nothing when it cannot be read, has another length or another signature; also for
    // a signature that is not the base64 of 64 bytes.
    [[nodiscard]] static std::optional<VerifiedArchive> open(const QString &path, qint64 length,
                                                             const QString &signature, const UpdateKey &key);

    // The open file; its position is unspecified.
    [[nodiscard]] QFile &file() { return *file_; }

private:
    explicit VerifiedArchive(std::unique_ptr<QFile> file)
        : file_(std::move(file))
    {
    }

    std::unique_ptr<QFile> file_;
};
