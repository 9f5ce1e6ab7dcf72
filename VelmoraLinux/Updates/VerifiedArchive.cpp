#include "VerifiedArchive.h"

#include <sodium.h>

namespace {

// Nothing unless `base64` is standard base64 of exactly `size` bytes.
std::optional<QByteArray> decoded(const QString &base64, size_t size)
{
    const auto result = QByteArray::fromBase64Encoding(
        base64.trimmed().toLatin1(), QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    if (!result || static_cast<size_t>(result.decoded.size()) != size)
        return std::nullopt;
    return result.decoded;
}

const unsigned char *unsignedBytes(const QByteArray &bytes)
{
    return reinterpret_cast<const unsigned char *>(bytes.constData());
}

} // namespace

std::optional<UpdateKey> UpdateKey::fromBase64(const QString &base64)
{
    auto bytes = decoded(base64, crypto_sign_PUBLICKEYBYTES);
    return bytes ? std::optional(UpdateKey(std::move(*bytes))) : std::nullopt;
}

std::optional<VerifiedArchive> VerifiedArchive::open(const QString &path, qint64 length,
                                                     const QString &signature, const UpdateKey &key)
{
    const auto signatureBytes = decoded(signature, crypto_sign_BYTES);
    auto file = std::make_unique<QFile>(path);
    if (!signatureBytes || sodium_init() < 0 || !file->open(QIODevice::ReadOnly))
        return std::nullopt;
    if (length <= 0 || file->size() != length)
        return std::nullopt;
    uchar *bytes = file->map(0, length); // Mapped, so that memory use does not grow with the archive.
    if (bytes == nullptr)
        return std::nullopt;
    const bool good =
        crypto_sign_verify_detached(unsignedBytes(*signatureBytes), bytes,
                                    static_cast<unsigned long long>(length), unsignedBytes(key.bytes())) == 0;
    file->unmap(bytes);
    return good ? std::optional(VerifiedArchive(std::move(file))) : std::nullopt;
}
