#include <VelmoraLinux/Updates/VerifiedArchive.h>

#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <sodium.h>

using namespace Qt::StringLiterals;

namespace {

struct Keys {
    QByteArray publicKey{crypto_sign_PUBLICKEYBYTES, '\0'};
    QByteArray secretKey{crypto_sign_SECRETKEYBYTES, '\0'};
};

unsigned char *bytes(QByteArray &array)
{
    return reinterpret_cast<unsigned char *>(array.data());
}

Keys newKeys()
{
    Keys keys;
    crypto_sign_keypair(bytes(keys.publicKey), bytes(keys.secretKey));
    return keys;
}

QString signature(QByteArray content, Keys keys)
{
    QByteArray result(crypto_sign_BYTES, '\0');
    crypto_sign_detached(bytes(result), nullptr, bytes(content),
                         static_cast<unsigned long long>(content.size()), bytes(keys.secretKey));
    return QString::fromLatin1(result.toBase64());
}

} // namespace

class VerifiedArchiveTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        QVERIFY(sodium_init() >= 0);
        QVERIFY(folder_.isValid());
        keys_ = newKeys();
    }

    void aSignedArchiveOpens()
    {
        const QByteArray content("the whole archive");
        auto archive =
            VerifiedArchive::open(write(content), content.size(), signature(content, keys_), key(keys_));
        QVERIFY(archive.has_value());
        archive->file().seek(0);
        QCOMPARE(archive->file().readAll(), content);
    }

    void aLargeArchiveOpens()
    {
        const QByteArray content(qsizetype{64} * 1024 * 1024, 'v');
        QVERIFY(VerifiedArchive::open(write(content), content.size(), signature(content, keys_), key(keys_)));
    }

    void everythingElseIsRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<qint64>("length");
        QTest::addColumn<QString>("signature");

        const QByteArray good("the whole archive");
        const QString right = signature(good, keys_);
        const qint64 size = good.size();
        QTest::newRow("another length announced") << good << size + 1 << right;
        QTest::newRow("no length announced") << good << qint64(0) << right;
        QTest::newRow("truncated") << good.chopped(1) << size << right;
        QTest::newRow("truncated, and announced so") << good.chopped(1) << size - 1 << right;
        QTest::newRow("one byte more") << good + "x" << size + 1 << right;
        QTest::newRow("bytes appended behind the announced length") << good + good << size << right;
        QTest::newRow("one bit changed") << QByteArray("uhe whole archive") << size << right;
        QTest::newRow("empty") << QByteArray() << qint64(0) << signature({}, keys_);
        QTest::newRow("signature of another file") << good << size << signature("another archive", keys_);
        QTest::newRow("signature of another key") << good << size << signature(good, newKeys());
        QTest::newRow("no signature") << good << size << QString();
        QTest::newRow("signature too short") << good << size << right.left(40);
        QTest::newRow("signature with rubbish") << good << size << QString(right + u'!');
        QTest::newRow("signature of zeros")
            << good << size << QString::fromLatin1(QByteArray(64, '\0').toBase64());
    }

    void everythingElseIsRefused()
    {
        QFETCH(QByteArray, content);
        QFETCH(qint64, length);
        QFETCH(QString, signature);
        QVERIFY(!VerifiedArchive::open(write(content), length, signature, key(keys_)).has_value());
    }

    void aMissingFileIsRefused()
    {
        QVERIFY(!VerifiedArchive::open(folder_.filePath(u"none"_s), 1, signature("x", keys_), key(keys_))
                     .has_value());
    }

    void keysAreRead()
    {
        const QString base64 = QString::fromLatin1(keys_.publicKey.toBase64());
        QCOMPARE(key(keys_).bytes(), keys_.publicKey);
        QVERIFY(UpdateKey::fromBase64(u" \n"_s + base64 + u"\n"_s).has_value());
        QVERIFY(!UpdateKey::fromBase64(QString()).has_value());
        QVERIFY(!UpdateKey::fromBase64(base64.left(20)).has_value());
        QVERIFY(!UpdateKey::fromBase64(base64 + base64).has_value());
        QVERIFY(!UpdateKey::fromBase64(u"not base64 at all, not at all, not at all!!!"_s).has_value());
    }

private:
    static UpdateKey key(const Keys &keys)
    {
        return *UpdateKey::fromBase64(QString::fromLatin1(keys.publicKey.toBase64()));
    }

    QString write(const QByteArray &content)
    {
        QFile file(folder_.filePath(u"archive"_s));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write the test archive");
        return file.fileName();
    }

    QTemporaryDir folder_;
    Keys keys_;
};

static const RegisteredTest<VerifiedArchiveTests> registered;
#include "VerifiedArchiveTests.moc"
