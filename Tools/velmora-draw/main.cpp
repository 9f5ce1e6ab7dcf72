// Draws an SVG file as square PNG pictures: velmora-draw IN.svg OUT.png SIZE [OUT.png SIZE]...
//
// Part of the build: every picture the application shows comes from a drawing in VelmoraMac/Resources.

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

namespace {

bool draw(QSvgRenderer &drawing, const QString &path, int size)
{
    QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    drawing.render(&painter, QRectF(0, 0, size, size));
    painter.end();
    return picture.save(path, "PNG");
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 4 || argc % 2 != 0) {
        std::fputs("usage: velmora-draw IN.svg OUT.png SIZE [OUT.png SIZE]...\n", stderr);
        return 2;
    }
    QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
    if (!drawing.isValid()) {
        std::fprintf(stderr, "velmora-draw: %s is no drawing\n", argv[1]);
        return 1;
    }
    for (int i = 2; i < argc; i += 2) {
        const int size = QByteArray(argv[i + 1]).toInt();
        if (size < 1 || size > 4096 || !draw(drawing, QString::fromLocal8Bit(argv[i]), size)) {
            std::fprintf(stderr, "velmora-draw: cannot draw %s at %s\n", argv[i], argv[i + 1]);
            return 1;
        }
    }
    return 0;
}
