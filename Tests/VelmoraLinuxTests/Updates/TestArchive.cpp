#include "TestArchive.h"

#include <QDir>
#include <QFile>

#include <lzma.h>
#include <sodium.h>
#include <zlib.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype blockSize = 512;

QByteArray octal(qint64 value, int size)
{
    return QByteArray::number(value, 8).rightJustified(size - 1, '0') + '\0';
}

unsigned char *bytes(QByteArray &array)
{
    return reinterpret_cast<unsigned char *>(array.data());
}

struct File {
    QByteArray name;
    QByteArray content;
    bool isProgram = false;
};

std::vector<File> programFiles(const QByteArray &version, const QByteArray &program)
{
    return {
        {"bin/velmora", program, true},
        {"share/velmora/Info.json",
         R"({"CFBundleIdentifier": "app.velmora.Velmora", "CFBundleVersion": ")" + version + "\"}\n", false},
        {"share/velmora/manifest", "bin/velmora\nshare/velmora/Info.json\nshare/velmora/manifest\n", false}};
}

} // namespace

TestArchive &TestArchive::add(const Entry &entry)
{
    const qint64 size = entry.announcedSize < 0 ? entry.content.size() : entry.announcedSize;
    QByteArray header(blockSize, '\0');
    const auto put = [&header](qsizetype at, const QByteArray &field) {
        header.replace(at, field.size(), field);
    };
    put(0, entry.name.left(100));
    put(100, octal(entry.mode, 8));
    put(108, octal(0, 8));
    put(116, octal(0, 8));
    put(124, octal(size, 12));
    put(136, octal(0, 12));
    put(148, QByteArray(8, ' '));
    header[156] = entry.type;
    put(157, entry.link.left(100));
    put(257, QByteArray("ustar\0"
                        "00",
                        8));
    qint64 sum = 0;
    for (const char byte : header)
        sum += static_cast<unsigned char>(byte);
    put(148, octal(sum, 7) + ' ');
    blocks_ += header + entry.content;
    blocks_.resize((blocks_.size() + blockSize - 1) / blockSize * blockSize, '\0');
    return *this;
}

QByteArray TestArchive::tar() const
{
    return blocks_ + QByteArray(2 * blockSize, '\0');
}

QByteArray TestArchive::gzip() const
{
    return gzipped(tar());
}

QByteArray TestArchive::xz() const
{
    return xzCompressed(tar());
}

QByteArray xzCompressed(const QByteArray &input)
{
    const auto size = static_cast<size_t>(input.size());
    QByteArray result(static_cast<qsizetype>(lzma_stream_buffer_bound(size)), '\0');
    size_t written = 0;
    if (lzma_easy_buffer_encode(1, LZMA_CHECK_CRC64, nullptr, reinterpret_cast<const uint8_t *>(input.data()),
                                size, bytes(result), &written, static_cast<size_t>(result.size())) != LZMA_OK)
        qFatal("cannot compress the test archive");
    result.truncate(static_cast<qsizetype>(written));
    return result;
}

QByteArray wantingMemory(QByteArray xz, int exponent)
{
    constexpr qsizetype header = 12; // Where that of the first block stands.
    constexpr qsizetype checksumSize = 4;
    const qsizetype headerWords = xz[header] + 1;
    const qsizetype checksum = header + 4 * headerWords - checksumSize;
    const QByteArray filter("\x21\x01"); // LZMA2, with one byte that tells the size of its dictionary.
    xz[xz.indexOf(filter, header) + filter.size()] = static_cast<char>(2 * (exponent - 12));
    const uLong sum = crc32(0, bytes(xz) + header, static_cast<uInt>(checksum - header));
    for (int i = 0; i < checksumSize; ++i)
        xz[checksum + i] = static_cast<char>(sum >> 8 * i);
    return xz;
}

QByteArray gzipped(const QByteArray &input)
{
    constexpr int gzipWindow = 15 + 16;
    QByteArray content = input;
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, gzipWindow, 8, Z_DEFAULT_STRATEGY);
    QByteArray result(static_cast<qsizetype>(deflateBound(&stream, static_cast<uLong>(content.size()))),
                      '\0');
    stream.next_in = bytes(content);
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = bytes(result);
    stream.avail_out = static_cast<uInt>(result.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END)
        qFatal("cannot compress the test archive");
    result.truncate(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    return result;
}

QByteArray programArchive(const QByteArray &version, const QByteArray &program)
{
    const QByteArray top = "velmora-" + version + '/';
    TestArchive archive;
    archive.add({.name = top, .content = {}, .type = '5', .mode = 0755, .link = {}});
    for (const File &file : programFiles(version, program))
        archive.add({.name = top + file.name,
                     .content = file.content,
                     .mode = file.isProgram ? 0755 : 0644,
                     .link = {}});
    return archive.gzip();
}

TestKeys::TestKeys()
    : public_(crypto_sign_PUBLICKEYBYTES, '\0')
    , secret_(crypto_sign_SECRETKEYBYTES, '\0')
{
    if (sodium_init() < 0)
        qFatal("libsodium does not work here");
    crypto_sign_keypair(bytes(public_), bytes(secret_));
}

QString TestKeys::publicBase64() const
{
    return QString::fromLatin1(public_.toBase64());
}

UpdateKey TestKeys::publicKey() const
{
    return *UpdateKey::fromBase64(publicBase64());
}

QString TestKeys::sign(const QByteArray &content) const
{
    QByteArray result(crypto_sign_BYTES, '\0');
    QByteArray message = content;
    QByteArray secret = secret_;
    crypto_sign_detached(bytes(result), nullptr, bytes(message),
                         static_cast<unsigned long long>(message.size()), bytes(secret));
    return QString::fromLatin1(result.toBase64());
}

void writeFile(const QString &path, const QByteArray &content, bool isProgram)
{
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly) ||
        file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
    if (isProgram)
        file.setPermissions(file.permissions() | QFile::ExeOwner | QFile::ExeUser);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void installProgram(const QString &root, const QByteArray &version, const QByteArray &program)
{
    for (const File &file : programFiles(version, program))
        writeFile(root + u'/' + QString::fromUtf8(file.name), file.content, file.isProgram);
}
