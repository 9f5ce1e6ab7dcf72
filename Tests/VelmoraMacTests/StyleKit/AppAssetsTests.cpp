#include <VelmoraMac/StyleKit/AppAssets.h>

#include <QDir>
#include <QIcon>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class AppAssetsTests : public QObject {
    Q_OBJECT

    static void put(const QString &path, int side, const QColor &color)
    {
        QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
        image.fill(color);
        QVERIFY(image.save(path));
    }

    static QColor colorOf(const QString &name, int pixels = 0)
    {
        const QImage image = AppAssets::image(name, pixels).image;
        return image.pixelColor(image.width() / 2, image.height() / 2);
    }

private Q_SLOTS:

    void cleanup() { AppAssets::setResourceFolder({}); }

    void theFolderComesFirstThenItsImages()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkpath(u"Images"_s));
        put(folder.filePath(u"both.png"_s), 16, Qt::red);
        put(folder.filePath(u"Images/both.png"_s), 16, Qt::green);
        put(folder.filePath(u"Images/inner.png"_s), 16, Qt::blue);
        AppAssets::setResourceFolder(folder.path());

        QCOMPARE(colorOf(u"both"_s), QColor(Qt::red));
        QCOMPARE(colorOf(u"inner"_s), QColor(Qt::blue));
    }

    void theFolderWinsOverWhatIsCompiledIn()
    {
        const QTemporaryDir folder;
        put(folder.filePath(u"velmora-app-icon.png"_s), 16, Qt::red);
        AppAssets::setResourceFolder(folder.path());

        QCOMPARE(colorOf(u"velmora-app-icon"_s), QColor(Qt::red));
    }

    void windowsHaveAnIconInTheSizesOfTitleBars()
    {
        const QIcon icon = AppAssets::windowIcon();
        for (const int side : {16, 32, 64, 128}) {
            QVERIFY2(icon.availableSizes().contains(QSize(side, side)), qPrintable(QString::number(side)));
            const QImage picture = icon.pixmap(QSize(side, side), 1.0).toImage();
            QCOMPARE(picture.size(), QSize(side, side));
            QCOMPARE(picture.pixelColor(side / 2, 1).alpha() > 200,
                     side < 64); // Small ones fill their square.
        }
    }

    void theProductsPicturesAreThereWithoutABundle()
    {
        for (const char *name : {"velmora-app-icon", "velmora-menubar-template"}) {
            const AppAssets::Picture picture = AppAssets::image(QLatin1String(name));
            QVERIFY2(picture.image.width() > 32, name);
            QVERIFY2(picture.accessibilityDescription.isEmpty(), name);
        }
    }

    void aLargeSizeTakesTheLargeFile()
    {
        const QTemporaryDir folder;
        put(folder.filePath(u"two.png"_s), 16, Qt::red);
        put(folder.filePath(u"two@2x.png"_s), 32, Qt::green);
        AppAssets::setResourceFolder(folder.path());

        QCOMPARE(colorOf(u"two"_s, 16), QColor(Qt::red));
        QCOMPARE(colorOf(u"two"_s, 24), QColor(Qt::green));
        QCOMPARE(AppAssets::image(u"two"_s, 24).image.size(), QSize(24, 24));
    }

    void aMissingPictureIsReplacedByTheLinkSymbol()
    {
        const AppAssets::Picture picture = AppAssets::image(u"no-such-picture"_s, 24);

        QCOMPARE(picture.image, AppAssets::symbol(u"link"_s, 24));
        QCOMPARE(picture.accessibilityDescription, u"Velmora"_s);
    }

    void aBrokenFileIsPassedOver()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"velmora-app-icon.png"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("no picture");
        file.close();
        AppAssets::setResourceFolder(folder.path());

        QVERIFY(AppAssets::image(u"velmora-app-icon"_s).image.width() > 32);
    }

    void everySymbolIsDrawn_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"pause.circle.fill", "pause.fill", "checkmark.circle.fill",
                                 "checkmark.shield.fill", "sparkles", "lock.fill", "clock.arrow.circlepath",
                                 "switch.2", "wand.and.sparkles", "link.badge.plus", "link"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void everySymbolIsDrawn()
    {
        QFETCH(QString, name);
        const QImage symbol = AppAssets::symbol(name, 48);

        QCOMPARE(symbol.size(), QSize(48, 48));
        int inked = 0;
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 48; ++x)
                inked += symbol.pixelColor(x, y).alpha() > 128 ? 1 : 0;
        QVERIFY2(inked > 150 && inked < 48 * 48 * 3 / 4, qPrintable(QString::number(inked)));
    }

    void anUnknownSymbolIsNothing() { QVERIFY(AppAssets::symbol(u"no.such.symbol"_s, 48).isNull()); }

    void theTemplateIsOneColourOnTransparent()
    {
        const QImage image = AppAssets::image(u"velmora-menubar-template"_s).image;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (const QColor pixel = image.pixelColor(x, y); pixel.alpha() > 0)
                    QVERIFY(pixel.red() == 0 && pixel.green() == 0 && pixel.blue() == 0);
    }
};

static const RegisteredGuiTest<AppAssetsTests> registered;
#include "AppAssetsTests.moc"
