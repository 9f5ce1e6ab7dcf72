#include "AppAssets.h"

#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int emptySide = 32;
constexpr int symbolSide = 64; // Of a symbol in place of a picture without a size.

QString &resourceFolder()
{
    static QString folder;
    return folder;
}

QImage scaled(const QImage &image, int pixels)
{
    if (pixels <= 0 || image.isNull() || std::max(image.width(), image.height()) == pixels)
        return image;
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied)
        .scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

// The smaller of the two files that is large enough.
QImage fromFiles(const QString &base, int pixels)
{
    QImage image(base + u".png"_s);
    if (pixels > 0 && (image.isNull() || image.width() < pixels)) {
        const QImage large(base + u"@2x.png"_s);
        if (!large.isNull())
            image = large;
    }
    return scaled(image, pixels);
}

QImage fromFolders(const QString &name, int pixels)
{
    const QString &folder = resourceFolder();
    if (folder.isEmpty())
        return {};
    for (const QString &base : {QString(folder + u"/"_s + name), QString(folder + u"/Images/"_s + name)}) {
        if (QImage image = fromFiles(base, pixels); !image.isNull())
            return image;
    }
    return {};
}

QImage fromPlatform(const QString &name, int pixels)
{
    if (QImage image = fromFiles(u":/velmora/images/"_s + name, pixels); !image.isNull())
        return image;
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()) == nullptr ||
        !QIcon::hasThemeIcon(name))
        return {};
    const int side = pixels > 0 ? pixels : symbolSide;
    return QIcon::fromTheme(name).pixmap(QSize(side, side), 1.0).toImage();
}

} // namespace

void AppAssets::setResourceFolder(const QString &folder)
{
    resourceFolder() = folder;
}

AppAssets::Picture AppAssets::image(const QString &name, int pixels)
{
    if (const QImage image = fromFolders(name, pixels); !image.isNull())
        return {image, {}};
    if (const QImage image = fromPlatform(name, pixels); !image.isNull())
        return {image, {}};
    if (const QImage image = symbol(u"link"_s, pixels > 0 ? pixels : symbolSide); !image.isNull())
        return {image, u"Velmora"_s};
    QImage empty(emptySide, emptySide, QImage::Format_ARGB32_Premultiplied);
    empty.fill(Qt::transparent);
    return {empty, {}};
}

QIcon AppAssets::windowIcon()
{
    QIcon icon;
    for (const QString &size : {u"16"_s, u"32"_s, u"64"_s})
        icon.addFile(u":/velmora/window-icons/"_s + size + u".png"_s);
    icon.addFile(u":/velmora/images/velmora-app-icon.png"_s);
    return icon;
}

std::unique_ptr<QSvgRenderer> AppAssets::symbolOutline(const QString &name)
{
    const QString path = u":/velmora/symbols/"_s + name + u".svg"_s;
    return QFile::exists(path) ? std::make_unique<QSvgRenderer>(path) : nullptr;
}

QImage AppAssets::symbol(const QString &name, int pixels)
{
    const auto outline = pixels > 0 ? symbolOutline(name) : nullptr;
    if (!outline)
        return {};
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    outline->render(&painter, QRectF(0, 0, pixels, pixels));
    return image;
}
