#include <VelmoraLinux/Instance/HomeLock.h>

#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>

namespace {

// Another process, which has taken the lock of `folder` when the constructor returns.
class Holder {
public:
    explicit Holder(const QString &folder)
    {
        std::array<int, 2> pipe{};
        if (::pipe(pipe.data()) != 0)
            return;
        pid_ = ::fork();
        if (pid_ == 0) {
            HomeLock lock(folder);
            const char taken = lock.take("display :7") ? 'y' : 'n';
            [[maybe_unused]] const auto written = ::write(pipe[1], &taken, 1);
            ::pause();
            ::_exit(0);
        }
        ::close(pipe[1]);
        [[maybe_unused]] const auto got = ::read(pipe[0], &answer_, 1);
        ::close(pipe[0]);
    }

    ~Holder() { end(); }

    Q_DISABLE_COPY_MOVE(Holder)

    void end()
    {
        if (pid_ <= 0)
            return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = 0;
    }

    [[nodiscard]] bool hasTaken() const { return answer_ == 'y'; }

    [[nodiscard]] pid_t pid() const { return pid_; }

private:
    pid_t pid_ = 0;
    char answer_ = 0;
};

} // namespace

class HomeLockTests : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> home_;

    QString folder() const { return home_->filePath(QStringLiteral("velmora")); }

private Q_SLOTS:

    void init() { home_ = std::make_unique<QTemporaryDir>(); }

    void oneProcessAtATimeHasAFolder()
    {
        Holder holder(folder());
        QVERIFY(holder.hasTaken());
        HomeLock ours(folder());
        QVERIFY(!ours.take("display :8"));
        QCOMPARE(ours.holder(), "process " + QByteArray::number(holder.pid()) + ", display :7");
        holder.end(); // As a crash would.
        QVERIFY(ours.take("display :8"));
    }

    void aPredecessorThatEndsIsWaitedFor()
    {
        Holder holder(folder());
        QVERIFY(holder.hasTaken());
        const std::unique_ptr<QThread> thread(QThread::create([&holder] {
            QThread::msleep(100);
            holder.end();
        }));
        thread->start();
        HomeLock ours(folder());
        QVERIFY(ours.takeFromPredecessor("display :8"));
        thread->wait();
    }

    void aFolderThatCannotBeMadeIsNobodys()
    {
        HomeLock ours(QStringLiteral("/dev/null/velmora"));
        QVERIFY(ours.take("display :8"));
    }
};

static const RegisteredTest<HomeLockTests> registered;
#include "HomeLockTests.moc"
