#include <VelmoraMac/UpdateController.h>

#include <QJsonArray>
#include <QSignalSpy>
#include <QTest>

#include <Fakes/FakeBundleInfo.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

class FakeUpdater final : public Updater {
public:
    explicit FakeUpdater(int &checks)
        : checks_(checks)
    {
    }

    void checkForUpdates() override { ++checks_; }

    [[nodiscard]] bool canCheckForUpdates() const override { return free; }

    void setChangeHandler(ChangeHandler handler) override { changed = std::move(handler); }

    bool free = true;
    ChangeHandler changed;

private:
    int &checks_;
};

} // namespace

class UpdateControllerTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        bundle_ = {};
        made_.clear();
        checks_ = 0;
        updater_ = nullptr;
    }

    void anUpdaterExistsWithACompleteConfigurationOnly_data()
    {
        QTest::addColumn<QJsonValue>("feed");
        QTest::addColumn<QJsonValue>("key");
        QTest::addColumn<bool>("exists");

        const QJsonValue feed(u"https://e.example/appcast.xml"_s);
        const QJsonValue key(u"a2V5"_s);
        const QJsonValue missing(QJsonValue::Undefined);
        QTest::newRow("complete") << feed << key << true;
        QTest::newRow("no feed") << missing << key << false;
        QTest::newRow("a feed that is a number") << QJsonValue(42) << key << false;
        QTest::newRow("a feed that is a list") << QJsonValue(QJsonArray{feed}) << key << false;
        QTest::newRow("an empty feed") << QJsonValue(QString()) << key << false;
        QTest::newRow("a feed with a broken host") << QJsonValue(u"https://[::1/"_s) << key << false;
        QTest::newRow("a feed with a blank in its host") << QJsonValue(u"https://a b/"_s) << key << false;
        QTest::newRow("a feed with letters as its port")
            << QJsonValue(u"https://e.example:abc/"_s) << key << false;
        QTest::newRow("a feed behind a blank") << QJsonValue(u" https://e.example"_s) << key << false;
        QTest::newRow("a relative feed") << QJsonValue(u"e.example/x.xml"_s) << key << true;
        QTest::newRow("a feed with a blank in its path")
            << QJsonValue(u"https://e.example/a b"_s) << key << true;
        QTest::newRow("no key") << feed << missing << false;
        QTest::newRow("a key that is a number") << feed << QJsonValue(7) << false;
        QTest::newRow("an empty key") << feed << QJsonValue(QString()) << false;
        QTest::newRow("a key of blanks and line breaks") << feed << QJsonValue(u" \n\t\r\n "_s) << false;
        QTest::newRow("a key between blanks") << feed << QJsonValue(u" a2V5\n"_s) << true;
    }

    void anUpdaterExistsWithACompleteConfigurationOnly()
    {
        QFETCH(QJsonValue, feed);
        QFETCH(QJsonValue, key);
        QFETCH(bool, exists);
        if (!feed.isUndefined())
            bundle_.values[u"SUFeedURL"] = feed;
        if (!key.isUndefined())
            bundle_.values[u"SUPublicEDKey"] = key;

        const UpdateController controller(bundle_, factory());

        QCOMPARE(controller.hasUpdater(), exists);
        QCOMPARE(controller.canCheckForUpdates(), exists);
        QCOMPARE(made_.size(), exists ? 1 : 0);
    }

    void theConfigurationIsReadOnce()
    {
        UpdateController controller(bundle_, factory());
        configure();

        controller.checkForUpdates();

        QVERIFY(!controller.hasUpdater());
        QVERIFY(made_.isEmpty());
        QCOMPARE(checks_, 0);
    }

    void theUpdaterGetsTheConfiguration()
    {
        configure();
        const UpdateController controller(bundle_, factory());
        QCOMPARE(made_.value(0).feed, QUrl(u"https://e.example/appcast.xml"_s));
        QCOMPARE(made_.value(0).publicKey, u"a2V5"_s);
    }

    void aCheckIsHandedOn()
    {
        configure();
        UpdateController controller(bundle_, factory());
        QCOMPARE(checks_, 0);
        controller.checkForUpdates();
        QCOMPARE(checks_, 1);
    }

    void whetherACheckIsPossibleFollowsTheUpdater()
    {
        configure();
        const UpdateController controller(bundle_, factory());
        QSignalSpy changes(&controller, &UpdateController::canCheckForUpdatesChanged);

        updater_->free = false;
        updater_->changed();

        QVERIFY(!controller.canCheckForUpdates());
        QCOMPARE(changes.count(), 1);
    }

    void theStatusTextSaysWhetherThereIsAnUpdater()
    {
        const UpdateController without(bundle_, factory());
        configure();
        const UpdateController with(bundle_, factory());

        QCOMPARE(with.statusText(AppLanguage::english),
                 u"Automatic updates are ready for signed release builds."_s);
        QCOMPARE(with.statusText(AppLanguage::german),
                 u"Automatische Updates sind für signierte Release-Builds vorbereitet."_s);
        QCOMPARE(without.statusText(AppLanguage::english),
                 u"Automatic updates will be enabled after signing keys and the appcast are configured."_s);
        QCOMPARE(
            without.statusText(AppLanguage::german),
            u"Automatische Updates werden aktiviert, sobald Signier-Key und Appcast eingerichtet sind."_s);
    }

private:
    void configure()
    {
        bundle_.values[u"SUFeedURL"] = u"https://e.example/appcast.xml"_s;
        bundle_.values[u"SUPublicEDKey"] = u"a2V5"_s;
    }

    UpdateController::MakeUpdater factory()
    {
        return [this](const UpdateConfiguration &configuration) {
            made_.append(configuration);
            auto updater = std::make_unique<FakeUpdater>(checks_);
            updater_ = updater.get();
            return updater;
        };
    }

    FakeBundleInfo bundle_;
    QList<UpdateConfiguration> made_;
    int checks_ = 0;
    FakeUpdater *updater_ = nullptr;
};

static const RegisteredTest<UpdateControllerTests> registered;
#include "UpdateControllerTests.moc"
