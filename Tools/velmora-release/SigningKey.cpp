#include "SigningKey.h"

#include <QFile>
#include <QSaveFile>

#include <fcntl.h>
#include <sodium.h>
#include <unistd.h>

#include <string_view>

using namespace Qt::StringLiterals;

namespace {

constexpr std::string_view keyHead =
    "# Velmora's update signing key. Secret: it allows publishing updates.\n";

unsigned char *bytes(QByteArray &array)
{
    return reinterpret_cast<unsigned char *>(array.data());
}

// Writes a file that did not exist, readable by its owner alone; none remains of a failure.
bool writeNew(const QString &path, const QByteArray &content)
{
    const QByteArray name = QFile::encodeName(path);
    const int file = open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0)
        return false;
    const bool written =
        write(file, content.constData(), static_cast<size_t>(content.size())) == content.size() &&
        fsync(file) == 0;
    if (close(file) != 0 || !written) {
        unlink(name.constData());
        return false;
    }
    return true;
}

} // namespace

SigningKey::SigningKey(QByteArray seed)
    : publicKey_(crypto_sign_PUBLICKEYBYTES, '\0')
    , secretKey_(crypto_sign_SECRETKEYBYTES, '\0')
{
    crypto_sign_seed_keypair(bytes(publicKey_), bytes(secretKey_), bytes(seed));
}

std::optional<SigningKey> SigningKey::create(const QString &path, QString &problem)
{
    QByteArray seed(crypto_sign_SEEDBYTES, '\0');
    randombytes_buf(seed.data(), static_cast<size_t>(seed.size()));
    if (!writeNew(path, QByteArray(keyHead.data(), keyHead.size()) + seed.toBase64() + '\n')) {
        problem = u"%1: %2"_s.arg(path, qt_error_string());
        return std::nullopt;
    }
    return SigningKey(seed);
}

std::optional<SigningKey> SigningKey::read(const QString &path, QString &problem)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        problem = u"%1: %2"_s.arg(path, file.errorString());
        return std::nullopt;
    }
    for (int line = 1; !file.atEnd(); ++line) {
        const QByteArray text = file.readLine(1000).trimmed();
        if (text.isEmpty() || text.startsWith('#'))
            continue;
        const auto seed = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
        if (seed && seed.decoded.size() == static_cast<qsizetype>(crypto_sign_SEEDBYTES))
            return SigningKey(seed.decoded);
        problem = u"%1:%2: this is no signing key"_s.arg(path).arg(line);
        return std::nullopt;
    }
    problem = u"%1: holds no signing key"_s.arg(path);
    return std::nullopt;
}

QString SigningKey::publicKey() const
{
    return QString::fromLatin1(publicKey_.toBase64());
}

std::optional<QString> SigningKey::sign(const QString &file) const
{
    QFile archive(file);
    uchar *content = archive.open(QIODevice::ReadOnly) ? archive.map(0, archive.size()) : nullptr;
    if (content == nullptr)
        return std::nullopt;
    QByteArray signature(crypto_sign_BYTES, '\0');
    QByteArray secret = secretKey_;
    crypto_sign_detached(bytes(signature), nullptr, content, static_cast<unsigned long long>(archive.size()),
                         bytes(secret));
    return QString::fromLatin1(signature.toBase64());
}
