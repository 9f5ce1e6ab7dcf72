#include <VelmoraLinux/Updates/UpdateSession.h>

#include <QTest>

#include <Fakes/MemoryDefaultsStore.h>
#include <Fakes/RecordingUpdateDriver.h>
#include <Fakes/UtcTime.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

const QUrl feedAddress(u"https://e.example/appcast.xml"_s);

class FakeDownloader final : public Downloader {
public:
    void fetch(const QUrl &url, qint64, BytesDone done) override
    {
        log.append(u"feed "_s + url.toString());
        feedDone = std::move(done);
    }

    void fetchToFile(const QUrl &url, qint64 limit, const QString &path, Progress progress,
                     FileDone done) override
    {
        log.append(u"file %1 %2 %3"_s.arg(url.toString()).arg(limit).arg(path));
        fileProgress = std::move(progress);
        fileDone = std::move(done);
    }

    void cancel() override { log.append(u"cancel"_s); }

    QStringList log;
    BytesDone feedDone;
    Progress fileProgress;
    FileDone fileDone;
};

class FakeInstaller final : public UpdateInstaller {
public:
    QString downloadPath() override { return path; }

    void prepare(const DownloadedUpdate &update, Done done) override
    {
        log.append(u"prepare %1 %2 %3 %4"_s.arg(update.path)
                       .arg(update.length)
                       .arg(update.signature, update.version));
        prepared = std::move(done);
    }

    void install(Done done) override
    {
        log.append(u"install"_s);
        installed = std::move(done);
    }

    [[nodiscard]] QString foreignFile() const override { return u"/opt/velmora/mine"_s; }

    void discard() override { ++discarded; }

    QString path = u"/private/x"_s;
    QStringList log;
    Done prepared;
    Done installed;
    int discarded = 0;
};

QByteArray feedOf(const QByteArray &version, const QByteArray &more = {})
{
    return "<rss xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle'><channel><item>"
           "<sparkle:version>" +
           version + "</sparkle:version>" + more +
           "<description sparkle:format='plain-text'>Notes</description><link>https://e.example/news</link>"
           "<enclosure url='https://e.example/v.tar.gz' length='1000' type='application/gzip'"
           " sparkle:edSignature='c2ln'/></item></channel></rss>";
}

using Steps = QList<UpdateStep>;

} // namespace

class UpdateSessionTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        session_.reset();
        downloader_ = {};
        installer_ = {};
        driver_ = {};
        defaults_.emplace();
        opened_.clear();
        quits_ = 0;
        session_.emplace(UpdateSession::Dependencies{.downloader = downloader_,
                                                     .installer = installer_,
                                                     .driver = driver_,
                                                     .defaults = *defaults_,
                                                     .host = [this] { return host(); },
                                                     .openPage = [this](const QUrl &page) { opened_ = page; },
                                                     .quit = [this] { ++quits_; },
                                                     .changed = [] {}},
                         feedAddress, u"1.0"_s);
    }

    void everyStepUpToTheNewVersion()
    {
        session_->check(CheckKind::byUser);
        downloader_.feedDone({}, feedOf("20"));
        session_->answer(UpdateAnswer::accept);
        downloader_.fileProgress(500);
        downloader_.fileDone({});
        installer_.prepared({});
        QCOMPARE(installer_.log.size(), 1); // Not installed before the user says so.
        session_->answer(UpdateAnswer::accept);
        installer_.installed({});

        QCOMPARE(driver_.steps(), Steps({UpdateStep::checking, UpdateStep::found, UpdateStep::downloading,
                                         UpdateStep::verifying, UpdateStep::ready, UpdateStep::installing}));
        QCOMPARE(downloader_.log, QStringList({u"feed https://e.example/appcast.xml"_s,
                                               u"file https://e.example/v.tar.gz 1000 /private/x"_s}));
        QCOMPARE(installer_.log, QStringList({u"prepare /private/x 1000 c2ln 20"_s, u"install"_s}));
        QCOMPARE(installer_.discarded, 0);
        QCOMPARE(quits_, 1);
    }

    void theOfferSaysWhatItIs()
    {
        found(CheckKind::byUser);
        UpdateReport expected;
        expected.step = UpdateStep::found;
        expected.version = u"20"_s;
        expected.ownVersion = u"1.0"_s;
        expected.notes = u"Notes"_s;
        QCOMPARE(driver_.reports.last(), expected);
    }

    void progressIsShown()
    {
        found(CheckKind::byUser);
        session_->answer(UpdateAnswer::accept);
        downloader_.fileProgress(250);
        QCOMPARE(driver_.reports.last().received, 250);
        QCOMPARE(driver_.reports.last().total, 1000);
    }

    void aScheduledCheckWithoutNewsShowsNothing()
    {
        session_->check(CheckKind::scheduled);
        QVERIFY(session_->isRunning());
        QVERIFY(!session_->isVisible());
        downloader_.feedDone({}, feedOf("10"));
        QVERIFY(driver_.reports.isEmpty());
        QVERIFY(!session_->isRunning());
    }

    void aScheduledCheckThatFailsShowsNothing()
    {
        session_->check(CheckKind::scheduled);
        downloader_.feedDone(UpdateProblem::unreachable, {});
        QVERIFY(driver_.reports.isEmpty());
        QVERIFY(!session_->isRunning());
    }

    void aScheduledCheckWithNewsTakesNoFocus()
    {
        found(CheckKind::scheduled);
        QCOMPARE(driver_.steps(), Steps({UpdateStep::found}));
        QCOMPARE(driver_.attentions.last(), UpdateUserDriver::Attention::quiet);
    }

    void aCheckByTheUserTakesTheFocus()
    {
        session_->check(CheckKind::byUser);
        QCOMPARE(driver_.attentions, QList({UpdateUserDriver::Attention::front}));
    }

    void theUserLearnsThatNothingIsNew_data()
    {
        QTest::addColumn<QByteArray>("version");
        QTest::newRow("the same version") << QByteArray("10");
        QTest::newRow("an older version") << QByteArray("9.9");
    }

    void theUserLearnsThatNothingIsNew()
    {
        QFETCH(QByteArray, version);
        session_->check(CheckKind::byUser);
        downloader_.feedDone({}, feedOf(version));
        QCOMPARE(driver_.steps(), Steps({UpdateStep::checking, UpdateStep::upToDate}));
        session_->answer(UpdateAnswer::accept);
        QVERIFY(!driver_.onShow);
        QVERIFY(!session_->isRunning());
    }

    void failuresAreShownToTheUser_data()
    {
        QTest::addColumn<QByteArray>("feed");
        QTest::addColumn<UpdateOutcome>("problem");
        QTest::addColumn<UpdateProblem>("shown");
        QTest::newRow("no answer") << QByteArray() << UpdateOutcome(UpdateProblem::unreachable)
                                   << UpdateProblem::unreachable;
        QTest::newRow("insecure") << QByteArray() << UpdateOutcome(UpdateProblem::insecure)
                                  << UpdateProblem::insecure;
        QTest::newRow("no feed") << QByteArray("<html/>") << UpdateOutcome() << UpdateProblem::feedDamaged;
    }

    void failuresAreShownToTheUser()
    {
        QFETCH(QByteArray, feed);
        QFETCH(UpdateOutcome, problem);
        session_->check(CheckKind::byUser);
        downloader_.feedDone(problem, feed);
        QCOMPARE(driver_.steps(), Steps({UpdateStep::checking, UpdateStep::failed}));
        QFETCH(UpdateProblem, shown);
        QCOMPARE(driver_.reports.last().problem, UpdateOutcome(shown));
        session_->answer(UpdateAnswer::dismiss);
        QVERIFY(!session_->isRunning());
    }

    void checkingCanBeCancelled()
    {
        session_->check(CheckKind::byUser);
        session_->answer(UpdateAnswer::dismiss);
        QCOMPARE(downloader_.log.last(), u"cancel"_s);
        QVERIFY(!driver_.onShow);
        QVERIFY(!session_->isRunning());
    }

    void downloadingCanBeCancelled()
    {
        found(CheckKind::byUser);
        session_->answer(UpdateAnswer::accept);
        downloader_.fileProgress(500);
        session_->answer(UpdateAnswer::dismiss);
        QCOMPARE(downloader_.log.last(), u"cancel"_s);
        QVERIFY(installer_.discarded > 0);
        QVERIFY(!driver_.onShow);
    }

    void aSkippedVersionIsNotOfferedBySchedule()
    {
        found(CheckKind::scheduled);
        session_->answer(UpdateAnswer::skip);
        QCOMPARE(defaults_->string(u"SUSkippedVersion"), u"20"_s);
        found(CheckKind::scheduled);
        QVERIFY(!session_->isRunning());
        QVERIFY(!driver_.onShow);
    }

    void aSkippedVersionIsOfferedToTheUserAndThenNoLongerSkipped()
    {
        defaults_->setString(u"SUSkippedVersion", u"20"_s);
        found(CheckKind::byUser);
        QCOMPARE(driver_.steps().last(), UpdateStep::found);
        session_->answer(UpdateAnswer::accept);
        QCOMPARE(defaults_->string(u"SUSkippedVersion"), std::nullopt);
    }

    void laterChangesNothing()
    {
        found(CheckKind::scheduled);
        session_->answer(UpdateAnswer::dismiss);
        QVERIFY(defaults_->keys().isEmpty());
        QVERIFY(!driver_.onShow);
        found(CheckKind::scheduled);
        QVERIFY(driver_.onShow);
    }

    void aCriticalUpdateCannotBePutOff()
    {
        session_->check(CheckKind::byUser);
        downloader_.feedDone({}, feedOf("20", "<sparkle:criticalUpdate/>"));
        QVERIFY(!driver_.reports.last().mayBePutOff);
        session_->answer(UpdateAnswer::skip);
        QVERIFY(defaults_->keys().isEmpty());
    }

    void anInformationalUpdateOpensItsPage()
    {
        session_->check(CheckKind::byUser);
        downloader_.feedDone({}, feedOf("20", "<sparkle:informationalUpdate/>"));
        QCOMPARE(driver_.reports.last().page, QUrl(u"https://e.example/news"_s));
        session_->answer(UpdateAnswer::accept);
        QCOMPARE(opened_, QUrl(u"https://e.example/news"_s));
        QVERIFY(!session_->isRunning());
        QCOMPARE(downloader_.log.size(), 1);
    }

    void aFailedStepIsShownAndDropsTheDownload_data()
    {
        QTest::addColumn<int>("step");
        QTest::newRow("download") << 0;
        QTest::newRow("preparation") << 1;
        QTest::newRow("installation") << 2;
    }

    void aFailedStepIsShownAndDropsTheDownload()
    {
        QFETCH(int, step);
        const auto outcome = [step](int at) {
            return at == step ? UpdateOutcome(UpdateProblem::noSpace) : UpdateOutcome();
        };
        found(CheckKind::scheduled);
        session_->answer(UpdateAnswer::accept);
        downloader_.fileDone(outcome(0));
        if (step > 0)
            installer_.prepared(outcome(1));
        if (step > 1) {
            session_->answer(UpdateAnswer::accept);
            installer_.installed(outcome(2));
        }
        QCOMPARE(driver_.reports.last().step, UpdateStep::failed);
        QCOMPARE(driver_.reports.last().problem, UpdateProblem::noSpace);
        QVERIFY(installer_.discarded > 0);
        QCOMPARE(quits_, 0);
    }

    void noPlaceForTheDownloadIsAFailure()
    {
        installer_.path.clear();
        found(CheckKind::byUser);
        session_->answer(UpdateAnswer::accept);
        QCOMPARE(driver_.reports.last().step, UpdateStep::failed);
        QCOMPARE(downloader_.log.size(), 1);
    }

    void aSecondCheckWhileOneRunsDoesNothing()
    {
        session_->check(CheckKind::byUser);
        session_->check(CheckKind::scheduled);
        QCOMPARE(downloader_.log.size(), 1);
    }

private:
    void found(CheckKind kind)
    {
        session_->check(kind);
        downloader_.feedDone({}, feedOf("20"));
    }

    UpdateHost host()
    {
        return {.version = u"10"_s,
                .systemVersion = u"2.36"_s,
                .system = u"linux"_s,
                .architecture = u"x86_64"_s,
                .archiveTypes = {u"application/gzip"_s},
                .skippedVersion = defaults_->string(u"SUSkippedVersion").value_or(QString()),
                .rolloutGroup = 0,
                .now = utcTime({2026, 11, 20}, {12, 0})};
    }

    FakeDownloader downloader_;
    FakeInstaller installer_;
    RecordingUpdateDriver driver_;
    std::optional<MemoryDefaultsStore> defaults_;
    QUrl opened_;
    int quits_ = 0;
    std::optional<UpdateSession> session_;
};

static const RegisteredTest<UpdateSessionTests> registered;
#include "UpdateSessionTests.moc"
