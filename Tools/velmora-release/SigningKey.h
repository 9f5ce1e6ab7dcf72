#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The secret half of the update key, kept in a file of its own that only its owner can read.
class SigningKey {
public:
    // Generates a new key pair and writes it to `path`, which must not exist. Nothing, and no file, on failure.
    [[nodiscard]] static std::optional<SigningKey> create(const QString &path, QString &problem);
    // `problem` names file and line of what is wrong.
    [[nodiscard]] static std::optional<SigningKey> read(const QString &path, QString &problem);

    // The value of the bundle's "SUPublicEDKey".
    [[nodiscard]] QString publicKey() const;
    // Base64 of the signature over all bytes of the file; nothing when it cannot be read or is empty.
    [[nodiscard]] std::optional<QString> sign(const QString &file) const;

private:
    explicit SigningKey(QByteArray seed);

    QByteArray publicKey_;
    QByteArray secretKey_;
};
