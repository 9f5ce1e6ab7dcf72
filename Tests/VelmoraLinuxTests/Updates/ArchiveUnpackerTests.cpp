#include "TestArchive.h"

#include <VelmoraLinux/Updates/ArchiveUnpacker.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <sys/resource.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

TestArchive::Entry folder(const QByteArray &name)
{
    return {.name = name, .content = {}, .type = '5', .mode = 0755, .link = {}};
}

TestArchive::Entry file(const QByteArray &name, const QByteArray &content = "x", int mode = 0644)
{
    return {.name = name, .content = content, .mode = mode, .link = {}};
}

TestArchive::Entry special(const QByteArray &name, char type, const QByteArray &link = {})
{
    return {.name = name, .content = {}, .type = type, .link = link};
}

TestArchive good()
{
    return TestArchive().add(folder("v/")).add(file("v/a", "A"));
}

// Inside it, writing a file beyond `bytes` fails as on a full disk.
class SmallDisk {
public:
    explicit SmallDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }

    ~SmallDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

private:
    rlimit before_{};
};

} // namespace

class ArchiveUnpackerTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        folder_ = std::make_unique<QTemporaryDir>();
        QVERIFY(folder_->isValid());
    }

    void anArchiveIsUnpackedWithoutItsTopFolder_data()
    {
        QTest::addColumn<QByteArray>("archive");
        const QByteArray tar = good()
                                   .add(folder("v/empty"))
                                   .add(file("v/bin/run", "#!", 0755))
                                   .add(file("v/large", QByteArray(100'000, 'L')))
                                   .tar();
        QTest::newRow("gzip") << gzipped(tar);
        QTest::newRow("xz") << xzCompressed(tar);
        QTest::newRow("xz, at its highest level") << wantingMemory(xzCompressed(tar), 26);
    }

    void anArchiveIsUnpackedWithoutItsTopFolder()
    {
        QFETCH(QByteArray, archive);
        const QByteArray large(100'000, 'L');
        QCOMPARE(unpack(archive), UpdateOutcome());
        QCOMPARE(readFile(target() + u"/a"_s), "A");
        QCOMPARE(readFile(target() + u"/large"_s), large);
        QVERIFY(QFileInfo(target() + u"/bin/run"_s).isExecutable());
        QVERIFY(!QFileInfo(target() + u"/a"_s).isExecutable());
        QVERIFY(QFileInfo(target() + u"/empty"_s).isDir());
    }

    void archivesThatAreNotPlainAreRefused_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<UpdateProblem>("problem");

        const auto row = [](const char *name, const TestArchive &archive) {
            QTest::newRow(name) << archive.gzip() << UpdateProblem::contents;
        };
        row("climbing out", good().add(file("v/../../escaped")));
        row("climbing out at the front", good().add(file("../escaped")));
        row("climbing as a folder", good().add(folder("v/..")));
        row("an absolute name", good().add(file("/tmp/velmora-escaped")));
        row("a dot", good().add(file("v/./b")));
        row("an empty part", good().add(file("v//b")));
        row("an empty name", good().add(file("")));
        row("a backslash", good().add(file("v/..\\b")));
        row("a control character", good().add(file("v/a\nb")));
        row("a file beside the top folder", good().add(file("w/b")));
        row("a file as top folder", TestArchive().add(file("v")));
        row("a symbolic link", good().add(special("v/link", '2', "/etc")));
        row("a hard link", good().add(special("v/link", '1', "v/a")));
        row("a device", good().add(special("v/device", '3')));
        row("a pipe", good().add(special("v/pipe", '6')));
        row("a long name in extension blocks", good().add({"v/x", "v/long", 'L', 0644, {}}));
        row("an extended header", good().add({"v/x", "12 path=/etc\n", 'x', 0644, {}}));
        row("the same file twice", good().add(file("v/a", "B")));
        row("a file where a folder is", good().add(folder("v/d")).add(file("v/d")));
        row("a folder below a file", good().add(file("v/a/b")));
        row("a folder with contents", good().add({"v/d", "x", '5', 0755, {}}));
        row("nothing at all", TestArchive());
        row("too deep", good().add(file("v" + QByteArray("/d").repeated(40))));

        QTest::newRow("no end mark") << gzipped(good().tar().chopped(1024)) << UpdateProblem::contents;
        QTest::newRow("cut short") << good().gzip().chopped(20) << UpdateProblem::contents;
        QTest::newRow("cut short in a file")
            << gzipped(TestArchive().add(file("v/a", QByteArray(9000, 'x'))).tar().left(4096))
            << UpdateProblem::contents;
        QTest::newRow("no gzip") << good().tar().replace("ustar", "other") << UpdateProblem::contents;
        QTest::newRow("another checksum")
            << gzipped(good().tar().replace("v/a", "v/b")) << UpdateProblem::contents;
        QTest::newRow("a size beyond the limit")
            << TestArchive().add({"v/a", "x", '0', 0644, {}, 2'000'000}).gzip() << UpdateProblem::tooLarge;
        QTest::newRow("many files beyond the limit together")
            << TestArchive()
                   .add(file("v/a", QByteArray(600'000, ' ')))
                   .add(file("v/b", QByteArray(600'000, ' ')))
                   .gzip()
            << UpdateProblem::tooLarge;
        TestArchive crowd;
        for (int i = 0; i < 60; ++i)
            crowd.add(file("v/" + QByteArray::number(i)));
        QTest::newRow("entries beyond the limit") << crowd.gzip() << UpdateProblem::tooLarge;
    }

    void archivesThatAreNotPlainAreRefused()
    {
        QFETCH(QByteArray, archive);
        QFETCH(UpdateProblem, problem);
        QCOMPARE(unpack(archive), UpdateOutcome(problem));
        QVERIFY(nothingLiesBesideTheTarget());
        QVERIFY(!QFileInfo::exists(u"/tmp/velmora-escaped"_s));
    }

    void faultyXzIsRefused_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<UpdateProblem>("problem");
        QTest::newRow("cut short") << good().xz().chopped(40) << UpdateProblem::contents;
        QTest::newRow("nothing behind its mark") << good().xz().left(6) << UpdateProblem::contents;
        QTest::newRow("no end mark") << xzCompressed(good().tar().chopped(1024)) << UpdateProblem::contents;
        QByteArray damaged = good().xz();
        damaged[40] = static_cast<char>(damaged[40] ^ 1);
        QTest::newRow("with another bit inside") << damaged << UpdateProblem::contents;
        QTest::newRow("climbing out") << good().add(file("../escaped")).xz() << UpdateProblem::contents;
        QTest::newRow("a size beyond the limit")
            << TestArchive().add({"v/a", "x", '0', 0644, {}, 2'000'000}).xz() << UpdateProblem::tooLarge;
        QTest::newRow("more memory than is sane")
            << wantingMemory(good().xz(), 28) << UpdateProblem::contents;
    }

    void faultyXzIsRefused() { archivesThatAreNotPlainAreRefused(); }

    void existingFilesAreNotOverwrittenAndLinksNotFollowed()
    {
        QVERIFY(QDir().mkpath(target()) && QDir().mkpath(folder_->filePath(u"outside"_s)));
        writeFile(target() + u"/a"_s, "mine");
        QCOMPARE(unpack(good().gzip()), UpdateProblem::contents);
        QCOMPARE(readFile(target() + u"/a"_s), "mine");
        QVERIFY(QFile::link(folder_->filePath(u"outside"_s), target() + u"/linked"_s));
        QCOMPARE(unpack(TestArchive().add(folder("v/")).add(file("v/linked/b", "B")).gzip()),
                 UpdateProblem::contents);
        QVERIFY(QDir(folder_->filePath(u"outside"_s)).isEmpty());
    }

    void aFullDiskIsNoticed()
    {
        const QByteArray archive = good().add(file("v/large", QByteArray(500'000, 'x'))).gzip();
        auto verified = this->verified(archive);
        const SmallDisk disk(100'000);
        QCOMPARE(ArchiveUnpacker({}).unpack(*verified, folderAt(target())), UpdateProblem::noSpace);
    }

private:
    [[nodiscard]] QString target() const { return folder_->filePath(u"in/target"_s); }

    static FolderHandle folderAt(const QString &path)
    {
        QDir().mkpath(path);
        return FolderHandle::open(path);
    }

    [[nodiscard]] bool nothingLiesBesideTheTarget() const
    {
        const auto entries = [](const QString &path) {
            return QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                        QDir::NoDotAndDotDot);
        };
        const QStringList inside = entries(folder_->filePath(u"in"_s));
        return entries(folder_->path()) == QStringList({u"archive"_s, u"in"_s}) &&
               (inside.isEmpty() || inside == QStringList(u"target"_s));
    }

    std::optional<VerifiedArchive> verified(const QByteArray &archive)
    {
        const QString path = folder_->filePath(u"archive"_s);
        writeFile(path, archive);
        if (!QDir().mkpath(folder_->filePath(u"in"_s)))
            qFatal("cannot make the test folder");
        return VerifiedArchive::open(path, archive.size(), keys_.sign(archive), keys_.publicKey());
    }

    UpdateOutcome unpack(const QByteArray &archive)
    {
        auto verifiedArchive = verified(archive);
        if (!verifiedArchive)
            qFatal("the test archive does not verify");
        return ArchiveUnpacker({.bytes = 1'000'000, .entries = 50})
            .unpack(*verifiedArchive, folderAt(target()));
    }

    TestKeys keys_;
    std::unique_ptr<QTemporaryDir> folder_;
};

static const RegisteredTest<ArchiveUnpackerTests> registered;
#include "ArchiveUnpackerTests.moc"
