#include "TestArchive.h"

#include <VelmoraLinux/Updates/Replacement.h>

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

const QByteArray oldProgram = "#!/bin/sh\necho old\n";
const QByteArray newProgram = "#!/bin/sh\necho new\n";

// Runs `work` in a process of its own and kills that before its `count`th system call. False when it ended by itself.
bool killedAtSystemCall(int count, const std::function<void()> &work)
{
    const pid_t child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    for (int stops = 0; WIFSTOPPED(status); ++stops) {
        if (stops == 2 * count) { // One stop on the way in, one on the way out.
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return true;
        }
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        qFatal("the child did not end in peace");
    return false;
}

} // namespace

class ReplacementTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        folder_ = std::make_unique<QTemporaryDir>();
        QVERIFY(folder_->isValid());
        installProgram(root(), "1", oldProgram);
        writeFile(image(), oldProgram, true);
    }

    void aFolderOfOursIsRecognised()
    {
        const Installation installation = detected();
        QCOMPARE(installation.kind, Installation::Kind::folder);
        QCOMPARE(installation.target, root());
        QCOMPARE(installation.launcher, program());
        QCOMPARE(installation.archiveTypes(), QStringList({u"application/x-xz"_s, u"application/gzip"_s}));
    }

    void aFolderWithForeignFilesIsLeftAlone()
    {
        writeFile(root() + u"/share/applications/other.desktop"_s, "x");
        QCOMPARE(detected().kind, Installation::Kind::managed);
        QCOMPARE(detected().problem, UpdateProblem::foreignFile);
        QCOMPARE(detected().place, root() + u"/share/applications/other.desktop"_s);
    }

    void aFolderThatOthersCanWriteToIsLeftAlone_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("isShared");
        QTest::newRow("the parent, everybody") << u"."_s << 0707 << true;
        QTest::newRow("the parent, a group") << u"."_s << 0770 << true;
        QTest::newRow("the parent, everybody, sticky") << u"."_s << 01777 << true;
        QTest::newRow("the parent, others may read") << u"."_s << 0755 << false;
        QTest::newRow("the installed folder") << u"velmora"_s << 0777 << true;
    }

    void aFolderThatOthersCanWriteToIsLeftAlone()
    {
        QFETCH(QString, folder);
        QFETCH(int, mode);
        QFETCH(bool, isShared);
        const QString path = QDir::cleanPath(folder_->filePath(folder));
        QCOMPARE(chmod(QFile::encodeName(path).constData(), static_cast<mode_t>(mode)), 0);
        QCOMPARE(detected().kind, isShared ? Installation::Kind::managed : Installation::Kind::folder);
        QCOMPARE(detected().problem, isShared ? UpdateOutcome(UpdateProblem::sharedFolder) : UpdateOutcome());
        QCOMPARE(detected().place, isShared ? path : QString());
        const bool isImageShared = isShared && path == folder_->path();
        QCOMPARE(detectedImage().kind,
                 isImageShared ? Installation::Kind::managed : Installation::Kind::appImage);
    }

    void aFolderOfAnotherUserIsLeftAlone()
    {
        if (geteuid() != 0)
            QSKIP("only the superuser can give a folder away");
        constexpr uid_t other = 65534;
        QCOMPARE(chown(QFile::encodeName(folder_->path()).constData(), other, other), 0);
        QCOMPARE(detected().problem, UpdateProblem::sharedFolder);
        QCOMPARE(detected().place, folder_->path());
    }

    void aHiddenFolderThatIsNotOursIsNotUsed_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("a link to another folder") << 0;
        QTest::newRow("a folder that others can enter") << 1;
        QTest::newRow("a file") << 2;
        if (geteuid() == 0) // Only the superuser can give a folder away.
            QTest::newRow("a folder of another user") << 3;
    }

    // Nothing is written or removed through what another user has put in the place of the hidden folder.
    void aHiddenFolderThatIsNotOursIsNotUsed()
    {
        QFETCH(int, kind);
        const QString outside = folder_->filePath(u"outside"_s);
        writeFile(outside + u"/other/share/velmora/manifest"_s, "mine\nshare/velmora/manifest\n");
        writeFile(outside + u"/other/mine"_s, "x");
        writeFile(outside + u"/unfinished/mine"_s, "x");
        const Replacement replacement(detected());
        if (kind == 0)
            QVERIFY(QFile::link(outside, hidden()));
        else if (kind == 1)
            QVERIFY(QDir().rename(outside, hidden()) &&
                    chmod(QFile::encodeName(hidden()).constData(), 0755) == 0);
        else if (kind == 2)
            writeFile(hidden(), "x");
        else
            QVERIFY(QDir().rename(outside, hidden()) &&
                    chmod(QFile::encodeName(hidden()).constData(), 0700) == 0 &&
                    chown(QFile::encodeName(hidden()).constData(), 65534, 65534) == 0);
        replacement.cleanUp();
        QCOMPARE(prepare(replacement, programArchive("2", newProgram), u"2"_s), UpdateProblem::notReplaced);
        QCOMPARE(replacement.exchange(), UpdateProblem::notReplaced);
        QCOMPARE(readFile(program()), oldProgram);
        const QString kept = kind % 2 == 1 ? hidden() : outside;
        QCOMPARE(readFile(kept + u"/other/mine"_s), "x");
        QCOMPARE(readFile(kept + u"/unfinished/mine"_s), "x");
    }

    void linksInsideTheHiddenFolderAreNotFollowed()
    {
        const QString outside = folder_->filePath(u"outside"_s);
        writeFile(outside + u"/velmora"_s, "x");
        const Replacement replacement(detected());
        QCOMPARE(prepare(replacement, programArchive("2", newProgram), u"2"_s), UpdateOutcome());
        QVERIFY(QDir(hidden() + u"/other/bin"_s).removeRecursively());
        QVERIFY(QFile::link(outside, hidden() + u"/other/bin"_s));
        QVERIFY(QFile::link(outside, hidden() + u"/unfinished"_s));
        replacement.cleanUp();
        QCOMPARE(readFile(outside + u"/velmora"_s), "x");
    }

    void aFolderWithAForeignLinkIsLeftAlone()
    {
        QVERIFY(QFile::link(u"/etc"_s, root() + u"/bin/etc"_s));
        QCOMPARE(detected().kind, Installation::Kind::managed);
    }

    void aListThatIsALinkIsNone()
    {
        const QString list = root() + u"/share/velmora/manifest"_s;
        const QString elsewhere = folder_->filePath(u"manifest"_s);
        QVERIFY(QFile::rename(list, elsewhere));
        QVERIFY(QFile::link(elsewhere, list));
        QCOMPARE(detected().kind, Installation::Kind::managed);
    }

    void aFolderWithMissingFilesIsLeftAlone()
    {
        QVERIFY(QFile::remove(root() + u"/share/velmora/Info.json"_s));
        QCOMPARE(detected().kind, Installation::Kind::managed);
    }

    void aFolderWithoutAListIsLeftAlone()
    {
        QVERIFY(QFile::remove(root() + u"/share/velmora/manifest"_s));
        QCOMPARE(detected().kind, Installation::Kind::managed);
    }

    void aListWithParentFoldersIsRejected()
    {
        writeFile(root() + u"/share/velmora/manifest"_s, "bin/velmora\n../velmora/bin/velmora\n");
        QCOMPARE(detected().kind, Installation::Kind::managed);
    }

    void aSandboxIsManaged()
    {
        QProcessEnvironment environment;
        environment.insert(u"FLATPAK_ID"_s, u"app.velmora.Velmora"_s);
        const Installation installation = Installation::detect(program(), environment);
        QCOMPARE(installation.kind, Installation::Kind::managed);
        QCOMPARE(installation.manager, u"Flatpak"_s);
        QCOMPARE(installation.archiveTypes(), QStringList());
    }

    void anImageIsRecognised()
    {
        const Installation installation = detectedImage();
        QCOMPARE(installation.kind, Installation::Kind::appImage);
        QCOMPARE(installation.target, image());
        QCOMPARE(installation.launcher, image());
    }

    void theNewVersionTakesTheOldOnesPlace()
    {
        const Replacement replacement(detected());
        QCOMPARE(prepare(replacement, programArchive("2", newProgram), u"2"_s), UpdateOutcome());
        QCOMPARE(readFile(program()), oldProgram); // Nothing has happened yet.
        QCOMPARE(replacement.exchange(), UpdateOutcome());
        QCOMPARE(readFile(program()), newProgram);
        QCOMPARE(detected().kind, Installation::Kind::folder);
        replacement.cleanUp();
        QCOMPARE(neighbours(), clean());
    }

    void theOldVersionComesBack()
    {
        const Replacement replacement(detected());
        QCOMPARE(prepare(replacement, programArchive("2", newProgram), u"2"_s), UpdateOutcome());
        QCOMPARE(replacement.exchange(), UpdateOutcome());
        QCOMPARE(replacement.exchange(), UpdateOutcome());
        QCOMPARE(readFile(program()), oldProgram);
        replacement.cleanUp();
        QCOMPARE(neighbours(), clean());
    }

    void anImageIsReplacedAsAFile()
    {
        const Replacement replacement(imageInstallation());
        QCOMPARE(prepare(replacement, newProgram, u"2"_s), UpdateOutcome());
        QCOMPARE(replacement.exchange(), UpdateOutcome());
        QCOMPARE(readFile(image()), newProgram);
        QVERIFY(QFileInfo(image()).isExecutable());
        replacement.cleanUp();
        QCOMPARE(neighbours(), clean());
    }

    void archivesOfSomethingElseAreRefused_data()
    {
        QTest::addColumn<QByteArray>("archive");
        const auto with = [](const QByteArray &information, const QByteArray &manifest, int mode) {
            return TestArchive()
                .add({"v/bin/velmora", newProgram, '0', mode, {}})
                .add({"v/share/velmora/Info.json", information, '0', 0644, {}})
                .add({"v/share/velmora/manifest", manifest, '0', 0644, {}})
                .gzip();
        };
        const QByteArray information =
            R"({"CFBundleIdentifier": "app.velmora.Velmora", "CFBundleVersion": "2"})";
        const QByteArray manifest = "bin/velmora\nshare/velmora/Info.json\nshare/velmora/manifest\n";
        QTest::newRow("an older version, properly signed") << programArchive("1", newProgram);
        QTest::newRow("another program")
            << with(R"({"CFBundleIdentifier": "x", "CFBundleVersion": "2"})", manifest, 0755);
        QTest::newRow("no information") << with("", manifest, 0755);
        QTest::newRow("a program that cannot be started") << with(information, manifest, 0644);
        QTest::newRow("files that are not on its list") << with(information, "bin/velmora\n", 0755);
    }

    void archivesOfSomethingElseAreRefused()
    {
        QFETCH(QByteArray, archive);
        QCOMPARE(prepare(Replacement(detected()), archive, u"2"_s), UpdateProblem::contents);
        QCOMPARE(readFile(program()), oldProgram);
        QCOMPARE(neighbours(), clean());
    }

    void filesThatCameSinceTheStartStopTheUpdate()
    {
        const Replacement replacement(detected());
        writeFile(root() + u"/bin/mine"_s, "x");
        QCOMPARE(prepare(replacement, programArchive("2", newProgram), u"2"_s), UpdateProblem::foreignFile);
        QCOMPARE(readFile(root() + u"/bin/mine"_s), "x");
        QCOMPARE(neighbours(), clean());
    }

    void filesThatCameDuringTheUpdateAreKept()
    {
        const Replacement replacement(detected());
        QCOMPARE(prepare(replacement, programArchive("2", newProgram), u"2"_s), UpdateOutcome());
        writeFile(root() + u"/bin/mine"_s, "x");
        QCOMPARE(replacement.exchange(), UpdateOutcome());
        replacement.cleanUp();
        QCOMPARE(readFile(hidden() + u"/other/bin/mine"_s), "x");
    }

    void aFullDiskLeavesTheOldVersion()
    {
        const QByteArray large = programArchive("2", newProgram + QByteArray(500'000, '#'));
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{100'000, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
        const UpdateOutcome folder = prepare(Replacement(detected()), large, u"2"_s);
        setrlimit(RLIMIT_FSIZE, &before);

        QCOMPARE(folder, UpdateProblem::noSpace);
        QCOMPARE(readFile(program()), oldProgram);
        QCOMPARE(neighbours(), clean());
    }

    void killedAtAnySystemCallOneWholeVersionRemains_data()
    {
        QTest::addColumn<bool>("isImage");
        QTest::newRow("folder") << false;
        QTest::newRow("image") << true;
    }

    void killedAtAnySystemCallOneWholeVersionRemains()
    {
        QFETCH(bool, isImage);
        const Installation installation = isImage ? imageInstallation() : detected();
        const QByteArray archive = isImage ? newProgram : programArchive("2", newProgram);
        const QString started = isImage ? image() : program();
        int kills = 0;
        int newVersions = 0;
        for (bool killed = true; killed; ++kills) {
            killed = killedAtSystemCall(kills, [&] {
                const Replacement replacement(installation);
                if (prepare(replacement, archive, u"2"_s) || replacement.exchange())
                    _exit(1);
                replacement.cleanUp();
            });
            const bool isNew = readFile(started) == newProgram;
            QVERIFY2(isNew || readFile(started) == oldProgram,
                     qPrintable(u"killed at system call %1"_s.arg(kills)));
            QVERIFY(isImage || detected().kind == Installation::Kind::folder);
            Replacement(installation).cleanUp(); // What the next start does.
            QCOMPARE(neighbours(), clean());
            newVersions += isNew ? 1 : 0;
            installAgain(isImage);
        }
        QVERIFY2(kills > 30, qPrintable(QString::number(kills))); // It was really killed, often,
        QVERIFY(newVersions > 1 && newVersions < kills);          // before the exchange and behind it.
        qInfo("%d kills, the new version in place after %d of them", kills - 1, newVersions - 1);
    }

private:
    [[nodiscard]] QString root() const { return folder_->filePath(u"velmora"_s); }

    [[nodiscard]] QString program() const { return root() + u"/bin/velmora"_s; }

    [[nodiscard]] QString image() const { return folder_->filePath(u"Velmora.AppImage"_s); }

    [[nodiscard]] QString hidden() const { return folder_->filePath(u".velmora.update"_s); }

    [[nodiscard]] static QStringList clean() { return {u"velmora"_s, u"Velmora.AppImage"_s}; }

    [[nodiscard]] QStringList neighbours() const
    {
        QStringList result = QDir(folder_->path())
                                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                                            QDir::Name | QDir::IgnoreCase);
        result.removeAll(u"archive"_s);
        return result;
    }

    [[nodiscard]] Installation detected() const { return Installation::detect(program(), {}); }

    [[nodiscard]] Installation detectedImage() const
    {
        QProcessEnvironment environment;
        environment.insert(u"APPIMAGE"_s, image());
        environment.insert(u"APPDIR"_s, root());
        return Installation::detect(program(), environment);
    }

    [[nodiscard]] Installation imageInstallation() const
    {
        return {.kind = Installation::Kind::appImage, .target = image(), .launcher = image(), .manager = {}};
    }

    void installAgain(bool isImage)
    {
        if (isImage) {
            writeFile(image(), oldProgram, true);
        } else {
            QDir(root()).removeRecursively();
            installProgram(root(), "1", oldProgram);
        }
    }

    [[nodiscard]] UpdateOutcome prepare(const Replacement &replacement, const QByteArray &archive,
                                        const QString &version) const
    {
        const QString path = folder_->filePath(u"archive"_s);
        writeFile(path, archive);
        auto verified = VerifiedArchive::open(path, archive.size(), keys_.sign(archive), keys_.publicKey());
        if (!verified)
            qFatal("the test archive does not verify");
        return replacement.prepare(*verified, version);
    }

    TestKeys keys_;
    std::unique_ptr<QTemporaryDir> folder_;
};

static const RegisteredTest<ReplacementTests> registered;
#include "ReplacementTests.moc"
