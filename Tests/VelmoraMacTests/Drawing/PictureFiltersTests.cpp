#include <VelmoraMac/Drawing/PictureFilters.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

class PictureFiltersTests : public QObject {
    Q_OBJECT

    // A white dot of four by four pixels in the middle of nothing.
    static QImage dot()
    {
        QImage image(64, 64, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        for (int y = 30; y < 34; ++y)
            for (int x = 30; x < 34; ++x)
                image.setPixelColor(x, y, Qt::white);
        return image;
    }

    static double lightOf(const QImage &image)
    {
        double sum = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                sum += qAlpha(image.pixel(x, y));
        return sum * (64.0 / image.width()) * (64.0 / image.height());
    }

private Q_SLOTS:

    void noBlurGivesThePictureBack() { QCOMPARE(PictureFilters::blurred(dot(), 0), dot()); }

    void aBlurSpreadsAsAGaussianDoes()
    {
        const QImage blurred = PictureFilters::blurred(dot(), 2);

        QCOMPARE(blurred.size(), QSize(64, 64));
        const double middle = qAlpha(blurred.pixel(32, 32));
        const double oneSigma = qAlpha(blurred.pixel(34, 32));
        QVERIFY2(std::abs(middle - 117) < 14, qPrintable(QString::number(middle))); // 255 times 0.68 squared.
        QVERIFY(oneSigma < middle * 0.85 && oneSigma > middle * 0.5);
        QCOMPARE(qAlpha(blurred.pixel(45, 32)), 0);
    }

    void aBlurKeepsAboutTheSameLight()
    {
        for (const double sigma : {1.0, 2.0, 4.0})
            QVERIFY2(std::abs(lightOf(PictureFilters::blurred(dot(), sigma)) / lightOf(dot()) - 1) < 0.15,
                     qPrintable(QString::number(sigma)));
    }

    void aBlurIsTheSameInAllDirections()
    {
        const QImage blurred = PictureFilters::blurred(dot(), 2);
        for (int d = 0; d < 10; ++d) {
            QVERIFY(std::abs(qAlpha(blurred.pixel(33 + d, 32)) - qAlpha(blurred.pixel(30 - d, 32))) <= 2);
            QVERIFY(std::abs(qAlpha(blurred.pixel(32, 33 + d)) - qAlpha(blurred.pixel(33 + d, 32))) <= 2);
        }
    }

    void aPictureSmallerThanTheBlurSurvives()
    {
        QImage tiny(3, 2, QImage::Format_ARGB32_Premultiplied);
        tiny.fill(Qt::red);
        for (const double sigma : {0.5, 2.0, 8.0, 30.0})
            QVERIFY(!PictureFilters::blurred(tiny, sigma).isNull());
        QVERIFY(PictureFilters::blurred(QImage(), 4).isNull());
    }
};

static const RegisteredTest<PictureFiltersTests> registered;
#include "PictureFiltersTests.moc"
