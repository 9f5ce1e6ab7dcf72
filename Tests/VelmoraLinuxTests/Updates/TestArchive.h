#pragma once

#include <VelmoraLinux/Updates/VerifiedArchive.h>

#include <QByteArray>
#include <QList>
#include <QString>

// A tarball built entry by entry, so that it can also contain what no tool would write.
class TestArchive {
public:
    struct Entry {
        QByteArray name;
        QByteArray content;
        char type = '0';
        int mode = 0644;
        QByteArray link;
        qint64 announcedSize = -1; // Negative: the content's.
    };

    TestArchive &add(const Entry &entry);
    [[nodiscard]] QByteArray tar() const; // With the end mark.
    [[nodiscard]] QByteArray gzip() const;
    [[nodiscard]] QByteArray xz() const;

private:
    QByteArray blocks_;
};

[[nodiscard]] QByteArray gzipped(const QByteArray &input);

[[nodiscard]] QByteArray xzCompressed(const QByteArray &input);

// The same contents, but unpacking them takes 2 to the power of `exponent` bytes of memory, 12 at least.
[[nodiscard]] QByteArray wantingMemory(QByteArray xz, int exponent);

// A program of this version as a tarball: top folder, information dictionary, manifest and bin/velmora.
[[nodiscard]] QByteArray programArchive(const QByteArray &version, const QByteArray &program);

// A key pair for one test.
class TestKeys {
public:
    TestKeys();
    [[nodiscard]] UpdateKey publicKey() const;
    [[nodiscard]] QString publicBase64() const;
    [[nodiscard]] QString sign(const QByteArray &content) const;

private:
    QByteArray public_;
    QByteArray secret_;
};

void writeFile(const QString &path, const QByteArray &content, bool isProgram = false);
[[nodiscard]] QByteArray readFile(const QString &path);
// An installed copy of `version` in `root`, as the tarball would have left it.
void installProgram(const QString &root, const QByteArray &version, const QByteArray &program);
