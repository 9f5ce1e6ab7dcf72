#include "TestArchive.h"

#include <VelmoraLinux/Updates/Handover.h>
#include <VelmoraLinux/Updates/HandoverWatch.h>

#include <QList>
#include <QTemporaryDir>
#include <QTest>

#include <Fakes/VirtualTime.h>
#include <Runner/RegisteredTest.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <functional>
#include <optional>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int patience = 20'000; // Milliseconds; for a loaded machine.

} // namespace

// Both sides of handing over to a new version, with real processes.
class HandoverTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        folder_ = std::make_unique<QTemporaryDir>();
        outcomes_.clear();
        time_.emplace();
        handover_.emplace(*time_);
    }

    void aVersionThatAnnouncesItselfTakesOver_data()
    {
        QTest::addColumn<QByteArray>("words");
        QTest::newRow("in one piece") << QByteArray("printf 'ready 2\\n' >&3");
        QTest::newRow("in pieces") << QByteArray("printf 'rea' >&3; sleep 0.1; printf 'dy 2\\n' >&3");
    }

    void aVersionThatAnnouncesItselfTakesOver()
    {
        QFETCH(QByteArray, words);
        begin(words + "; cat <&3; echo on >\"$0.alone\"; echo $1 >>\"$0.alone\"\n");
        QTRY_COMPARE_WITH_TIMEOUT(outcomes_, QList<UpdateOutcome>{UpdateOutcome()}, patience);
        handover_.reset();
        QTest::qWait(100);
        QVERIFY(!QFile::exists(program() + u".alone"_s)); // It waits for this process to go.
        close(socket_);                                   // As the end of the process does.
        QTRY_COMPARE_WITH_TIMEOUT(readFile(program() + u".alone"_s), "on\n--handover=3\n", patience);
    }

    void aVersionThatFailsIsNoticed_data()
    {
        QTest::addColumn<QByteArray>("program");
        QTest::newRow("it ends at once") << QByteArray("exit 1\n");
        QTest::newRow("it crashes") << QByteArray("kill -SEGV $$\n");
        QTest::newRow("it is another version") << QByteArray("printf 'ready 1\\n' >&3; cat <&3\n");
        QTest::newRow("it is a longer version") << QByteArray("printf 'ready 2.1\\n' >&3; cat <&3\n");
        QTest::newRow("it says too much") << QByteArray("printf 'ready 2\\nready 2\\n' >&3; cat <&3\n");
        QTest::newRow("it talks nonsense") << QByteArray("echo hello >&3; cat <&3\n");
    }

    void aVersionThatFailsIsNoticed()
    {
        QFETCH(QByteArray, program);
        begin(program);
        QTRY_COMPARE_WITH_TIMEOUT(outcomes_, QList<UpdateOutcome>{UpdateOutcome(UpdateProblem::notStarted)},
                                  patience);
    }

    void aProgramThatCannotBeStartedIsNoticed()
    {
        handover_->start(folder_->filePath(u"none"_s), u"2"_s,
                         [this](auto problem) { outcomes_.append(problem); });
        QVERIFY(outcomes_.isEmpty()); // Reported later, like every result.
        time_->pass(1s);
        QCOMPARE(outcomes_, QList<UpdateOutcome>{UpdateOutcome(UpdateProblem::notStarted)});
    }

    void aVersionThatSaysNothingIsGivenUpAndEnded()
    {
        begin("echo $$ >\"$0.pid\"\nexec sleep 1000\n");
        QTRY_VERIFY_WITH_TIMEOUT(readFile(program() + u".pid"_s).endsWith('\n'), patience);
        const pid_t pid = readFile(program() + u".pid"_s).trimmed().toInt();
        time_->pass(19s);
        QTest::qWait(0);
        QVERIFY(outcomes_.isEmpty());
        QCOMPARE(kill(pid, 0), 0);
        time_->pass(1s);
        QCOMPARE(outcomes_, QList<UpdateOutcome>{UpdateOutcome(UpdateProblem::notStarted)});
        QTRY_VERIFY_WITH_TIMEOUT(hasEnded(pid), patience);
        time_->pass(2s);
        QVERIFY(kill(pid, 0) != 0); // Not even its exit status is left.
    }

    void theNewVersionWaitsUntilTheOldProcessHasEnded()
    {
        std::array<int, 2> ends{};
        QCOMPARE(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        auto guest = guestOf("--handover=" + QByteArray::number(ends[1]));
        QVERIFY(guest);
        std::atomic<bool> isOver = false;
        std::thread waiting([&] {
            guest->takeOver(u"2"_s);
            isOver = true;
        });
        std::array<char, 32> words{};
        const ssize_t size = read(ends[0], words.data(), words.size());
        const bool waited = !isOver;
        close(ends[0]);
        waiting.join();
        QCOMPARE(QByteArray(words.data(), size), "ready 2\n");
        QVERIFY(waited);
    }

    void theNewVersionContinuesWhenTheOldProcessHasEndedAlready()
    {
        std::array<int, 2> ends{};
        QCOMPARE(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        close(ends[0]);
        auto guest = guestOf("--handover=" + QByteArray::number(ends[1]));
        QVERIFY(guest);
        guest->takeOver(u"2"_s);
    }

    void aVersionThatDoesNotStandIsReplacedByTheOldOne_data()
    {
        QTest::addColumn<QByteArray>("report");
        QTest::addColumn<bool>("stands");
        QTest::newRow("it stands") << QByteArray("standing\n") << true;
        QTest::newRow("it ends") << QByteArray() << false;
        QTest::newRow("it ends in the middle of its report") << QByteArray("stand") << false;
        QTest::newRow("it says something else") << QByteArray("standing by\n") << false;
    }

    // The test plays the new version; the old one is a process that ends as soon as it has started the watch.
    void aVersionThatDoesNotStandIsReplacedByTheOldOne()
    {
        QFETCH(QByteArray, report);
        QFETCH(bool, stands);
        const QString marker = folder_->filePath(u"started"_s);
        const QByteArray old =
            "#!/bin/sh\necho $VELMORA_UPDATE_FAILED >'" + QFile::encodeName(marker) + "'\n";
        const Replacement replacement = exchangedWith(old);
        std::array<int, 2> belongings{}; // Open in the old process, and not in the watch.
        QCOMPARE(pipe2(belongings.data(), O_CLOEXEC | O_NONBLOCK), 0);
        const int connection = startWatch([&](int socket) {
            return HandoverWatch::start(socket, getppid(), replacement.preparedExchange(),
                                        QFile::encodeName(launcher()));
        });
        close(belongings[1]);
        char byte = 0;
        QCOMPARE(read(belongings[0], &byte, 1), ssize_t{0});
        close(belongings[0]);
        QVERIFY(!QFile::exists(marker));
        QCOMPARE(write(connection, report.constData(), size_t(report.size())), ssize_t(report.size()));
        if (stands) {
            while (send(connection, &byte, 1, MSG_NOSIGNAL) == 1) // Until the watch has ended.
                QTest::qWait(10);
        }
        close(connection);
        if (!stands)
            QTRY_COMPARE_WITH_TIMEOUT(readFile(marker), "1\n", patience);
        QCOMPARE(QFile::exists(marker), !stands);
        QCOMPARE(readFile(launcher()), stands ? QByteArray("#!/bin/sh\n") : old);
    }

    void aVersionThatHangsIsEndedAndReplacedByTheOldOne()
    {
        const QString marker = folder_->filePath(u"started"_s);
        const Replacement replacement =
            exchangedWith("#!/bin/sh\ntouch '" + QFile::encodeName(marker) + "'\n");
        const pid_t hanging = fork();
        if (hanging == 0) {
            while (true)
                pause();
        }
        const int connection = startWatch([&](int socket) {
            return HandoverWatch::start(socket, hanging, replacement.preparedExchange(),
                                        QFile::encodeName(launcher()), 200ms);
        });
        int status = 0;
        QCOMPARE(waitpid(hanging, &status, 0), hanging);
        QVERIFY(WIFSIGNALED(status));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(marker), patience);
        close(connection);
    }

    void theWatchEndsByASignal_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("the session ends") << SIGTERM;
        QTest::newRow("somebody interrupts it") << SIGINT;
        QTest::newRow("the terminal is gone") << SIGHUP;
        QTest::newRow("a pipe is gone") << SIGPIPE; // So that the old version starts without ignoring it.
    }

    // The old process treats signals in its own ways, and the watch begins as its copy.
    void theWatchEndsByASignal()
    {
        QFETCH(int, number);
        const Replacement replacement = exchangedWith("#!/bin/sh\n");
        const QList<QByteArray> before = children();
        QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); // Orphans are ours from now on.
        const int connection = startWatch([&](int socket) {
            std::signal(number, SIG_IGN);
            return HandoverWatch::start(socket, getppid(), replacement.preparedExchange(),
                                        QFile::encodeName(launcher()));
        });
        QList<QByteArray> orphans = children();
        orphans.removeIf([&before](const QByteArray &child) { return before.contains(child); });
        QCOMPARE(orphans.size(), 1);
        const pid_t watch = orphans.first().toInt();
        QCOMPARE(kill(watch, number), 0);
        close(connection); // Whatever the signal did, the watch ends now.
        int status = 0;
        QCOMPARE(waitpid(watch, &status, 0), watch);
        QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 0), 0);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), number);
    }

    void aStartWithoutHandoverIsRecognised_data()
    {
        QTest::addColumn<QByteArray>("argument");
        QTest::newRow("no argument") << QByteArray();
        QTest::newRow("another one") << QByteArray("--version");
        QTest::newRow("no number") << QByteArray("--handover=x");
        QTest::newRow("nothing") << QByteArray("--handover=");
        QTest::newRow("more than a number") << QByteArray("--handover=3x");
        QTest::newRow("standard output") << QByteArray("--handover=1");
        QTest::newRow("nothing that is open") << QByteArray("--handover=1000");
    }

    void aStartWithoutHandoverIsRecognised()
    {
        QFETCH(QByteArray, argument);
        QVERIFY(!guestOf(argument));
    }

private:
    [[nodiscard]] QString launcher() const { return folder_->filePath(u"velmora/bin/velmora"_s); }

    // A new version where the old one was, and the old one, `oldProgram`, beside it.
    [[nodiscard]] Replacement exchangedWith(const QByteArray &oldProgram) const
    {
        const QString root = folder_->filePath(u"velmora"_s);
        const QString hidden = folder_->filePath(u".velmora.update"_s);
        installProgram(root, "2", "#!/bin/sh\n");
        mkdir(QFile::encodeName(hidden).constData(), 0700);
        installProgram(hidden + u"/other"_s, "1", oldProgram);
        return Replacement(
            {.kind = Installation::Kind::folder, .target = root, .launcher = launcher(), .manager = {}});
    }

    // Process numbers, those included whose exit status nobody has collected.
    static QList<QByteArray> children()
    {
        return readFile(u"/proc/self/task/%1/children"_s.arg(getpid())).split(' ');
    }

    // Runs `start` in a process that plays the old version and ends then. The new version's end of the connection.
    static int startWatch(const std::function<bool(int socket)> &start)
    {
        std::array<int, 2> ends{};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
            return -1;
        const pid_t oldProcess = fork();
        if (oldProcess == 0) {
            close(ends[1]);
            _exit(start(ends[0]) ? 0 : 1);
        }
        close(ends[0]);
        waitForTheEndOf(oldProcess, ends[1]);
        return ends[1];
    }

    // The watch closes its half of the connection when the old process has ended.
    static void waitForTheEndOf(pid_t oldProcess, int connection)
    {
        std::array<char, 8> bytes{};
        QCOMPARE(read(connection, bytes.data(), bytes.size()), ssize_t{0});
        int status = -1;
        QCOMPARE(waitpid(oldProcess, &status, 0), oldProcess);
        QCOMPARE(status, 0);
    }

    [[nodiscard]] QString program() const { return folder_->filePath(u"program"_s); }

    void begin(const QByteArray &script)
    {
        writeFile(program(), "#!/bin/sh\n" + script, true);
        socket_ = dup(STDERR_FILENO); // The number that is free now is the one that the socket gets.
        close(socket_);
        handover_->start(program(), u"2"_s, [this](auto problem) { outcomes_.append(problem); });
    }

    static std::unique_ptr<HandoverReceiver> guestOf(const QByteArray &argument)
    {
        const std::array<const char *, 2> arguments{"velmora", argument.constData()};
        return HandoverReceiver::fromArguments(argument.isEmpty() ? 1 : 2, arguments.data());
    }

    // Also true for a child whose exit status has not been collected yet.
    static bool hasEnded(pid_t pid)
    {
        return readFile(u"/proc/%1/stat"_s.arg(pid)).contains(") Z ") || kill(pid, 0) != 0;
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::optional<VirtualTime> time_;
    std::optional<Handover> handover_;
    QList<UpdateOutcome> outcomes_; // Of every call of `done`.
    int socket_ = -1;
};

static const RegisteredTest<HandoverTests> registered;
#include "HandoverTests.moc"
