#include "TestArchive.h"

#include <VelmoraLinux/Time/EventLoopScheduler.h>
#include <VelmoraLinux/Time/SystemWallClock.h>
#include <VelmoraLinux/Updates/StandardUpdater.h>

#include <QDir>
#include <QElapsedTimer>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QTest>

#include <Fakes/FakeBundleInfo.h>
#include <Fakes/MemoryDefaultsStore.h>
#include <Fakes/RecordingUpdateDriver.h>
#include <Fakes/VirtualTime.h>
#include <Runner/RegisteredTest.h>
#include <TestBed/HttpsTestServer.h>
#include <sys/resource.h>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int patience = 20'000; // Milliseconds; for a loaded machine.

const QByteArray oldProgram = "#!/bin/sh\necho old\n";

// A program that records its start and takes over as a new version has to.
QByteArray newProgram(const QByteArray &claimedVersion)
{
    return "#!/bin/sh\necho \"version 2 starts as $0 $1\" >\"$VELMORA_TEST_LOG\"\nprintf 'ready " +
           claimedVersion + "\\n' >&3\nexec cat <&3 >/dev/null\n";
}

// What the server of one test does; by default it publishes a valid release of version 2.
struct Release {
    QByteArray version = "2";
    QByteArray archive = programArchive("2", newProgram("2"));
    QByteArray served;                // Instead of the archive that was signed.
    QByteArray signature;             // Instead of the right one.
    QByteArray feed;                  // Instead of the right one.
    QByteArray feedHead;              // Instead of the HTTP response's header.
    QByteArray archiveHead;           // Instead of the HTTP response's header.
    QByteArray archiveUrl;            // Instead of the right one.
    qint64 length = -1;               // Instead of the right one.
    qsizetype sentBeforeSilence = -1; // Of the archive.
};

using Attack = std::function<void(Release &)>;

QByteArray okHead(qint64 length, const QByteArray &more = {})
{
    return "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(length) + "\r\nConnection: close\r\n" +
           more + "\r\n";
}

QByteArray redirectTo(const QByteArray &url)
{
    return "HTTP/1.1 302 Found\r\nLocation: " + url + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
}

QByteArray xmlBomb()
{
    QByteArray bomb = "<!DOCTYPE rss [<!ENTITY a0 'boom'>";
    for (int i = 1; i < 64; ++i)
        bomb += "<!ENTITY a" + QByteArray::number(i) + " '" +
                ("&a" + QByteArray::number(i - 1) + ';').repeated(10) + "'>";
    return bomb + "]><rss><channel><item><title>&a63;</title></item></channel></rss>";
}

} // namespace

Q_DECLARE_METATYPE(Attack)

// The whole updater against a real HTTPS server on the loopback interface, installing for real.
class StandardUpdaterTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        QVERIFY(certificate_.isValid());
        QVERIFY(otherCertificate_.isValid());
        QVERIFY(wrongNameCertificate_.isValid());
    }

    void init()
    {
        folder_ = std::make_unique<QTemporaryDir>();
        installProgram(root(), "1", oldProgram);
        qputenv("VELMORA_TEST_LOG", QFile::encodeName(log()));
        bundle_.values = {{u"CFBundleVersion"_s, u"1"_s}, {u"CFBundleShortVersionString"_s, u"1.0"_s}};
        defaults_ = std::make_unique<MemoryDefaultsStore>();
        driver_ = {};
        release_ = {};
        quits_ = 0;
        serve(certificate_);
    }

    void cleanup()
    {
        updater_.reset();
        server_.reset();
    }

    void withoutANewerVersionTheUserIsTold()
    {
        release_.version = "1";
        begin();
        QVERIFY(arrivesAt(UpdateStep::upToDate));
        driver_.answer(UpdateAnswer::accept);
        QVERIFY(!driver_.onShow);
        QVERIFY(updater_->canCheckForUpdates());
    }

    void anOlderVersionIsNeverOffered()
    {
        release_.version = "0.9";
        begin();
        QVERIFY(arrivesAt(UpdateStep::upToDate));
    }

    void aNewVersionIsOfferedWithItsNotes()
    {
        begin();
        QVERIFY(arrivesAt(UpdateStep::found));
        QCOMPARE(driver_.reports.last().notes, u"What is new <b>here</b>"_s);
        QCOMPARE(driver_.reports.last().version, u"2"_s);
        QCOMPARE(driver_.reports.last().ownVersion, u"1.0"_s);
    }

    void laterLeavesEverythingAsItIs()
    {
        begin();
        QVERIFY(arrivesAt(UpdateStep::found));
        driver_.answer(UpdateAnswer::dismiss);
        theOldVersionIsInstalled();
        QCOMPARE(defaults_->string(u"SUSkippedVersion"), std::nullopt);
    }

    void aSkippedVersionIsPassedOverBySchedule()
    {
        begin();
        QVERIFY(arrivesAt(UpdateStep::found));
        driver_.answer(UpdateAnswer::skip);
        QCOMPARE(defaults_->string(u"SUSkippedVersion"), u"2"_s);

        driver_ = {};
        defaults_->setBoolean(u"SUEnableAutomaticChecks", true);
        defaults_->remove(u"SULastCheckTime");
        const qsizetype before = server_->requests.size();
        makeUpdater(); // Due at once: a scheduled check.
        QTRY_COMPARE_WITH_TIMEOUT(server_->requests.size(), before + 1, patience);
        QTRY_VERIFY_WITH_TIMEOUT(updater_->canCheckForUpdates(), patience);
        QVERIFY(driver_.reports.isEmpty());
    }

    void aDownloadCanBeCancelledHalfWay()
    {
        release_.archive = programArchive("2", newProgram("2") + randomBytes(400'000));
        release_.sentBeforeSilence = release_.archive.size() / 2;
        begin();
        QVERIFY(arrivesAt(UpdateStep::found));
        driver_.answer(UpdateAnswer::accept);
        QTRY_COMPARE_WITH_TIMEOUT(driver_.reports.last().received, release_.sentBeforeSilence, patience);
        QCOMPARE(QDir(downloads()).entryList(QDir::Files).size(), 1);
        QCOMPARE(QFile(downloads()).permissions() &
                     (QFile::ReadGroup | QFile::ReadOther | QFile::ExeGroup | QFile::ExeOther),
                 QFile::Permissions());

        driver_.answer(UpdateAnswer::dismiss);

        QVERIFY(!driver_.onShow);
        QTRY_VERIFY_WITH_TIMEOUT(QDir(downloads()).entryList(QDir::Files).isEmpty(), patience);
        theOldVersionIsInstalled();
    }

    void versionOneBecomesVersionTwoAndStarts()
    {
        begin();
        install();
        QTRY_COMPARE_WITH_TIMEOUT(quits_, 1, patience);
        QCOMPARE(readFile(log()), "version 2 starts as " + QFile::encodeName(program()) + " --handover=3\n");
        QCOMPARE(readFile(program()), newProgram("2"));
        updater_.reset();
        QCOMPARE(readFile(hidden() + u"/other/bin/velmora"_s),
                 oldProgram); // Kept until the new one has settled.
        Replacement(installation()).cleanUp();
        QVERIFY(!QFile::exists(hidden()));
    }

    // The old version's files are the watch's until this start has succeeded, however long that takes.
    void theOldVersionIsRemovedWhenTheNewOneStands()
    {
        VirtualTime time;
        QVERIFY(QDir().mkpath(hidden()));
        QFile::setPermissions(hidden(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        installProgram(hidden() + u"/other"_s, "0", oldProgram);
        makeUpdater(nullptr, &time);

        time.pass(1h);
        updater_.reset(); // Ends what it does in the background.
        QVERIFY(QFile::exists(hidden() + u"/other/bin/velmora"_s));

        makeUpdater(nullptr, &time);
        standing_();
        time.pass(10s - 1ms);
        updater_.reset();
        QVERIFY(QFile::exists(hidden() + u"/other/bin/velmora"_s));

        makeUpdater(nullptr, &time);
        standing_();
        time.pass(10s);
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(hidden()), patience);
    }

    void aNewVersionThatDoesNotStartIsReplacedByTheOldOne_data()
    {
        QTest::addColumn<QByteArray>("program");
        QTest::newRow("it ends at once") << QByteArray("#!/bin/sh\nexit 1\n");
        QTest::newRow("it is no program") << QByteArray("rubbish");
        QTest::newRow("it is another version") << newProgram("1");
        QTest::newRow("it talks nonsense") << QByteArray("#!/bin/sh\necho hello >&3\ncat <&3\n");
    }

    void aNewVersionThatDoesNotStartIsReplacedByTheOldOne()
    {
        QFETCH(QByteArray, program);
        release_.archive = programArchive("2", program);
        begin();
        install();
        QVERIFY(arrivesAt(UpdateStep::failed));
        QCOMPARE(driver_.reports.last().problem, UpdateProblem::notStarted);
        QCOMPARE(quits_, 0);
        theOldVersionIsInstalled();
    }

    void attacksLeaveTheOldVersion_data()
    {
        QTest::addColumn<Attack>("attack");
        QTest::addColumn<UpdateProblem>("problem");

        const auto row = [](const char *name, UpdateProblem problem, const Attack &attack) {
            QTest::newRow(name) << attack << problem;
        };
        row("a wrong signature", UpdateProblem::badSignature,
            [](Release &r) { r.signature = QByteArray(64, 'x').toBase64(); });
        row("no signature", UpdateProblem::badSignature, [](Release &r) { r.signature = " "; });
        row("the signature of another file", UpdateProblem::badSignature,
            [this](Release &r) { r.signature = keys_.sign("another archive").toLatin1(); });
        row("the signature of another key", UpdateProblem::badSignature,
            [](Release &r) { r.signature = TestKeys().sign(r.archive).toLatin1(); });
        row("a changed archive", UpdateProblem::badSignature, [](Release &r) {
            r.served = r.archive;
            r.served[r.served.size() / 2] = static_cast<char>(r.served[r.served.size() / 2] ^ 1);
        });
        row("a truncated archive", UpdateProblem::badSignature,
            [](Release &r) { r.served = r.archive.chopped(100); });
        row("an archive broken off", UpdateProblem::unreachable, [](Release &r) {
            r.served = r.archive.chopped(100);
            r.archiveHead = okHead(r.archive.size());
        });
        row("an oversized archive", UpdateProblem::tooLarge,
            [](Release &r) { r.served = r.archive + QByteArray(5'000'000, 'x'); });
        row("an oversized archive of unknown length", UpdateProblem::tooLarge, [](Release &r) {
            r.served = r.archive + QByteArray(5'000'000, 'x');
            r.archiveHead = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";
        });
        row("an announced length beyond the limit", UpdateProblem::tooLarge,
            [](Release &r) { r.length = 1LL << 40; });
        row("an older archive, properly signed, as a newer one", UpdateProblem::contents,
            [](Release &r) { r.archive = programArchive("1", oldProgram); });
        row("an archive that climbs out", UpdateProblem::contents, [](Release &r) {
            r.archive = TestArchive().add({"v/../../../escaped", "x", '0', 0644, {}}).gzip();
        });
        row("an archive with a link", UpdateProblem::contents, [](Release &r) {
            r.archive = TestArchive()
                            .add({"v/bin", {}, '2', 0777, "/tmp"})
                            .add({"v/bin/velmora", "x", '0', 0755, {}})
                            .gzip();
        });
        row("a missing archive", UpdateProblem::unreachable, [](Release &r) {
            r.archiveHead = "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
            r.served = " ";
        });
        row("an archive over http", UpdateProblem::insecure,
            [](Release &r) { r.archiveUrl = "http://127.0.0.1:9/archive"; });
        row("an archive redirected to http", UpdateProblem::insecure,
            [](Release &r) { r.archiveHead = redirectTo("http://127.0.0.1:9/archive"); });
    }

    void attacksLeaveTheOldVersion()
    {
        QFETCH(Attack, attack);
        attack(release_);
        begin();
        QVERIFY(arrivesAt(UpdateStep::found));
        driver_.answer(UpdateAnswer::accept);
        QVERIFY(arrivesAt(UpdateStep::failed));
        QFETCH(UpdateProblem, problem);
        QCOMPARE(driver_.reports.last().problem, UpdateOutcome(problem));
        QTRY_VERIFY_WITH_TIMEOUT(QDir(downloads()).entryList(QDir::Files).isEmpty(), patience);
        QVERIFY(!QFile::exists(folder_->filePath(u"escaped"_s)));
        theOldVersionIsInstalled();
    }

    void aFullDiskLeavesTheOldVersion_data()
    {
        QTest::addColumn<rlim_t>("largestFile");
        QTest::newRow("while loading") << rlim_t{200'000};
        QTest::newRow("while unpacking") << rlim_t{1'000'000};
    }

    void aFullDiskLeavesTheOldVersion()
    {
        QFETCH(rlim_t, largestFile);
        release_.archive =
            programArchive("2", newProgram("2") + randomBytes(400'000) + QByteArray(2'000'000, '#'));
        QVERIFY(release_.archive.size() > 200'000 && release_.archive.size() < 1'000'000);
        begin();
        QVERIFY(arrivesAt(UpdateStep::found));
        std::signal(SIGXFSZ, SIG_IGN); // As the program does.
        rlimit before{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        const rlimit full{largestFile, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &full), 0);
        driver_.answer(UpdateAnswer::accept);
        const bool failed = arrivesAt(UpdateStep::failed);
        setrlimit(RLIMIT_FSIZE, &before);

        QVERIFY(failed);
        QCOMPARE(driver_.reports.last().problem, UpdateProblem::noSpace);
        QTRY_VERIFY_WITH_TIMEOUT(QDir(downloads()).entryList(QDir::Files).isEmpty(), patience);
        theOldVersionIsInstalled();
    }

    void dangerousFeedsAreRefused_data()
    {
        QTest::addColumn<Attack>("attack");
        QTest::addColumn<UpdateProblem>("problem");

        const auto row = [](const char *name, UpdateProblem problem, const Attack &attack) {
            QTest::newRow(name) << attack << problem;
        };
        row("an XML bomb", UpdateProblem::feedDamaged, [](Release &r) { r.feed = xmlBomb(); });
        row("a file as entity", UpdateProblem::feedDamaged, [](Release &r) {
            r.feed =
                "<!DOCTYPE rss [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><rss><channel>&x;</channel></rss>";
        });
        row("a web page", UpdateProblem::feedDamaged, [](Release &r) { r.feed = "<html></html>"; });
        row("a compressed bomb", UpdateProblem::feedDamaged, [](Release &r) {
            r.feed = gzipped(QByteArray(50'000'000, ' '));
            r.feedHead = okHead(r.feed.size(), "Content-Encoding: gzip\r\n");
        });
        row("a redirection to http", UpdateProblem::insecure,
            [](Release &r) { r.feedHead = redirectTo("http://127.0.0.1:9/appcast.xml"); });
        row("redirections without end", UpdateProblem::unreachable,
            [](Release &r) { r.feedHead = redirectTo("/appcast.xml"); });
        row("a feed of 1 GiB", UpdateProblem::tooLarge, [](Release &r) { r.feedHead = okHead(1LL << 30); });
        row("a feed without end", UpdateProblem::tooLarge, [](Release &r) {
            r.feedHead = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";
            r.feed = QByteArray(30'000'000, ' ');
        });
    }

    void dangerousFeedsAreRefused()
    {
        QFETCH(Attack, attack);
        attack(release_);
        begin();
        QVERIFY(arrivesAt(UpdateStep::failed));
        QFETCH(UpdateProblem, problem);
        QCOMPARE(driver_.reports.last().problem, UpdateOutcome(problem));
        theOldVersionIsInstalled();
    }

    void untrustedCertificatesAreRefused_data()
    {
        QTest::addColumn<bool>("isWrongName");
        QTest::newRow("a certificate nobody vouches for") << false;
        QTest::newRow("the certificate of another host") << true;
    }

    void untrustedCertificatesAreRefused()
    {
        QFETCH(bool, isWrongName);
        serve(isWrongName ? wrongNameCertificate_ : otherCertificate_);
        begin(isWrongName ? wrongNameCertificate_ : certificate_);
        QVERIFY(arrivesAt(UpdateStep::failed));
        QCOMPARE(driver_.reports.last().problem, UpdateProblem::unreachable);
        QVERIFY(server_->requests.isEmpty());
    }

    void aFeedOverHttpIsNotEvenAskedFor()
    {
        feed_ = feedUrl();
        feed_->setScheme(u"http"_s);
        begin();
        QVERIFY(arrivesAt(UpdateStep::failed));
        QCOMPARE(driver_.reports.last().problem, UpdateProblem::insecure);
        QCOMPARE(server_->connections, 0);
        feed_.reset();
    }

    void aManagedCopySaysWhoUpdatesIt()
    {
        writeFile(root() + u"/bin/neighbour"_s, "x"); // Now the folder is not ours to replace.
        begin();
        QVERIFY(arrivesAt(UpdateStep::managed));
        QCOMPARE(driver_.reports.last().problem, UpdateProblem::foreignFile);
        QCOMPARE(driver_.reports.last().place, root() + u"/bin/neighbour"_s);
        QVERIFY(server_->requests.isEmpty());
        driver_.answer(UpdateAnswer::accept);
        QVERIFY(!driver_.onShow);
    }

    void aDamagedKeyIsSaid()
    {
        key_ = u"no key"_s;
        begin();
        key_.reset();
        QVERIFY(arrivesAt(UpdateStep::failed));
        QCOMPARE(driver_.reports.last().problem, UpdateProblem::badKey);
        QVERIFY(server_->requests.isEmpty());
    }

    void theSecondLaunchAsksAndKeepsTheAnswer()
    {
        makeUpdater();
        QVERIFY(driver_.reports.isEmpty());
        makeUpdater();
        QVERIFY(arrivesAt(UpdateStep::permission));
        driver_.answer(UpdateAnswer::dismiss);
        QCOMPARE(defaults_->boolean(u"SUEnableAutomaticChecks"), false);
        QVERIFY(!driver_.onShow);
        QVERIFY(server_->requests.isEmpty());
    }

    void aCheckWhileSomethingIsOnShowBringsThatToTheFront()
    {
        begin();
        QVERIFY(arrivesAt(UpdateStep::found));
        updater_->checkForUpdates();
        QCOMPARE(driver_.broughtToFront, 1);
        QCOMPARE(server_->requests.size(), 1);
    }

private:
    [[nodiscard]] QString root() const { return folder_->filePath(u"apps/velmora"_s); }

    [[nodiscard]] QString program() const { return root() + u"/bin/velmora"_s; }

    [[nodiscard]] QString hidden() const { return folder_->filePath(u"apps/.velmora.update"_s); }

    [[nodiscard]] QString downloads() const { return folder_->filePath(u"cache/velmora/updates"_s); }

    [[nodiscard]] QString log() const { return folder_->filePath(u"log"_s); }

    [[nodiscard]] Installation installation() const { return Installation::detect(program(), {}); }

    [[nodiscard]] QUrl feedUrl() const { return server_->url().resolved(QUrl(u"/appcast.xml"_s)); }

    static QByteArray randomBytes(qsizetype size)
    {
        QByteArray result(size, '\0');
        quint32 state = 1;
        for (char &byte : result) {
            state = state * 1664525 + 1013904223;
            byte = static_cast<char>(state >> 24);
        }
        return result;
    }

    [[nodiscard]] QByteArray feed() const
    {
        const QByteArray signature =
            release_.signature.isEmpty() ? keys_.sign(release_.archive).toLatin1() : release_.signature;
        const QByteArray url = release_.archiveUrl.isEmpty()
                                   ? server_->url().resolved(QUrl(u"/archive"_s)).toEncoded()
                                   : release_.archiveUrl;
        const qint64 length = release_.length < 0 ? release_.archive.size() : release_.length;
        return "<rss xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle'><channel><item>"
               "<sparkle:version>" +
               release_.version +
               "</sparkle:version>"
               "<description sparkle:format='plain-text'>What is new &lt;b>here&lt;/b></description>"
               "<enclosure url='" +
               url + "' length='" + QByteArray::number(length) +
               "' type='application/gzip' sparkle:edSignature='" + signature + "'/></item></channel></rss>";
    }

    void serve(const TestCertificate &certificate)
    {
        server_ = std::make_unique<HttpsTestServer>(certificate);
        server_->behaviours = {[this](QSslSocket &socket) { answer(socket); }};
    }

    void answer(QSslSocket &socket)
    {
        const bool isFeed = server_->requests.last().head.startsWith("GET /appcast.xml ");
        const QByteArray body = isFeed ? (release_.feed.isEmpty() ? feed() : release_.feed)
                                       : (release_.served.isEmpty() ? release_.archive : release_.served);
        const QByteArray head = isFeed ? release_.feedHead : release_.archiveHead;
        socket.write(head.isEmpty() ? okHead(body.size()) : head);
        if (!isFeed && release_.sentBeforeSilence >= 0) {
            socket.write(body.left(release_.sentBeforeSilence));
            return;
        }
        if (!head.startsWith("HTTP/1.1 302"))
            socket.write(body);
        socket.disconnectFromHost();
    }

    void makeUpdater(const TestCertificate *trusted = nullptr, Scheduler *scheduler = nullptr)
    {
        updater_.reset();
        updater_ = std::make_unique<StandardUpdater>(
            StandardUpdater::Dependencies{
                .defaults = *defaults_,
                .scheduler = scheduler != nullptr ? *scheduler : scheduler_,
                .clock = clock_,
                .bundle = bundle_,
                .driver = driver_,
                .installation = installation(),
                .downloadFolder = downloads(),
                .network = {.ssl = (trusted ? trusted : &certificate_)->trustingIt(),
                            .idleTimeout = 15s,
                            .userAgent = u"Velmora/1.0"_s},
                .openPage = [](const QUrl &) {},
                .quit = [this] { ++quits_; },
                .whenStanding = [this](std::function<void()> done) { standing_ = std::move(done); }},
            UpdateConfiguration{feed_.value_or(feedUrl()), key_.value_or(keys_.publicBase64())});
    }

    void begin(const TestCertificate &trusted) // The user asks for updates.
    {
        makeUpdater(&trusted);
        updater_->checkForUpdates();
    }

    void begin() { begin(certificate_); }

    void install()
    {
        QVERIFY(arrivesAt(UpdateStep::found));
        driver_.answer(UpdateAnswer::accept);
        QVERIFY(arrivesAt(UpdateStep::ready));
        QCOMPARE(readFile(program()), oldProgram);
        driver_.answer(UpdateAnswer::accept);
    }

    bool arrivesAt(UpdateStep step)
    {
        const bool arrived = QTest::qWaitFor(
            [&] { return !driver_.reports.isEmpty() && driver_.reports.last().step == step; }, patience);
        if (!arrived && !driver_.reports.isEmpty()) {
            const UpdateReport &last = driver_.reports.last();
            qInfo("is at step %d, problem %d", static_cast<int>(last.step),
                  last.problem ? static_cast<int>(*last.problem) : -1);
        }
        return arrived;
    }

    void theOldVersionIsInstalled()
    {
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(hidden()), patience);
        QCOMPARE(readFile(program()), oldProgram);
        QCOMPARE(installation().kind, Installation::Kind::folder);
    }

    const TestCertificate certificate_{u"IP:127.0.0.1"_s};
    const TestCertificate otherCertificate_{u"IP:127.0.0.1"_s};
    const TestCertificate wrongNameCertificate_{u"DNS:other.example"_s};
    const TestKeys keys_;
    EventLoopScheduler scheduler_;
    SystemWallClock clock_;
    FakeBundleInfo bundle_;
    std::unique_ptr<MemoryDefaultsStore> defaults_;
    RecordingUpdateDriver driver_;
    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<HttpsTestServer> server_;
    std::function<void()> standing_; // To be called when the start has succeeded.
    Release release_;
    std::optional<QUrl> feed_;
    std::optional<QString> key_;
    int quits_ = 0;
    std::unique_ptr<StandardUpdater> updater_;
};

static const RegisteredTest<StandardUpdaterTests> registered;
#include "StandardUpdaterTests.moc"
