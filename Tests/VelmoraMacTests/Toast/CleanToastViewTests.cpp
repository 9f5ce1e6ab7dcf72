#include <VelmoraMac/Motion/SpringCurve.h>

#include <QSignalSpy>
#include <QTest>

#include <Rehearsal/ItemTree.h>
#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class CleanToastViewTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        prepareFont(u"Inter"_s);
        QAccessible::setActive(true);
    }

    void itSaysWhatHappened_data()
    {
        QTest::addColumn<bool>("offersCleaning");
        QTest::addColumn<Velmora::AppLanguage>("language");
        QTest::addColumn<QStringList>("texts");

        QTest::newRow("cleaned") << false << AppLanguage::english
                                 << QStringList{u"Cleaned"_s, u"3 removed"_s};
        QTest::newRow("cleaned, German")
            << false << AppLanguage::german << QStringList{u"Bereinigt"_s, u"3 entfernt"_s};
        QTest::newRow("warning") << true << AppLanguage::english
                                 << QStringList{u"Trackers found"_s, u"3 removed"_s, u"Clean Link"_s};
        QTest::newRow("warning, German")
            << true << AppLanguage::german
            << QStringList{u"Tracker gefunden"_s, u"3 entfernt"_s, u"Link bereinigen"_s};
    }

    void itSaysWhatHappened()
    {
        QFETCH(bool, offersCleaning);
        QFETCH(Velmora::AppLanguage, language);
        QFETCH(QStringList, texts);
        StageSetup setup;
        setup.language = language;
        Stage stage(setup);
        QQuickItem *toast = stage.showToast(shopResult(), offersCleaning);
        QVERIFY2(toast != nullptr, qPrintable(stage.warnings.join(u'\n')));
        stage.pass(1s);

        QCOMPARE(ItemTree::texts(*toast), texts);
        for (const QQuickItem *text : toast->findChildren<QQuickItem *>())
            if (text->inherits("QQuickText"))
                QVERIFY(!text->property("truncated").toBool());
        QCOMPARE(stage.warnings, QStringList());
    }

    void aResultWithoutParametersIsShownAsZero()
    {
        Stage stage({});
        QQuickItem *toast = stage.showToast({u"a"_s, u"b"_s, {}}, false);
        stage.pass(1s);

        QVERIFY(ItemTree::texts(*toast).contains(u"0 removed"_s));
    }

    void everyPressAsksForCleaning()
    {
        Stage stage({});
        QQuickItem *toast = stage.showToast(shopResult(), true);
        stage.pass(1s);
        QSignalSpy requests(toast, SIGNAL(cleanRequested()));
        QQuickItem *button = ItemTree::control(*toast, u"Clean Link"_s);
        QVERIFY(button != nullptr);

        QTest::mouseClick(stage.window(), Qt::LeftButton, {}, ItemTree::middle(*button));
        QTest::mouseClick(stage.window(), Qt::LeftButton, {}, ItemTree::middle(*button));

        QCOMPARE(requests.size(), 2);
    }

    void aConfirmationHasNoControls()
    {
        Stage stage({});
        stage.showToast(shopResult(), false);
        stage.pass(1s);

        QVERIFY(ItemTree::controls(*stage.window()).empty());
    }

    void itComesFromAboveSmallAndBlurred()
    {
        Stage stage({});
        QQuickItem *toast = stage.showToast(shopResult(), false);
        const auto *entrance = toast->findChild<QQuickItem *>(u"entrance"_s);
        QVERIFY(entrance != nullptr);
        QCOMPARE(entrance->opacity(), 0.0);
        QCOMPARE(entrance->scale(), 0.9);
        QCOMPARE(entrance->property("blurRadius").toDouble(), 8.0);
        QCOMPARE(entrance->transformOrigin(), QQuickItem::TopRight);

        stage.pass(100ms);
        const double part = SpringCurve{0.5, 0.78}.at(0.1, {0, 0}, 1).value;
        QVERIFY(std::abs(entrance->opacity() - part) < 1e-6);
        QVERIFY(std::abs(entrance->scale() - (0.9 + 0.1 * part)) < 1e-6);
        stage.pass(1s);
        QCOMPARE(entrance->opacity(), 1.0);
        QCOMPARE(entrance->scale(), 1.0);
        QCOMPARE(entrance->property("blurRadius").toDouble(), 0.0);
    }
};

static const RegisteredGuiTest<CleanToastViewTests> registered;
#include "CleanToastViewTests.moc"
