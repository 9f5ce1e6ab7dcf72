#include "StatusNotifierTypes.h"

#include <QtEndian>

StatusNotifierPixmap StatusNotifierPixmap::of(const QImage &image)
{
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    StatusNotifierPixmap pixmap{argb.width(), argb.height(),
                                QByteArray(argb.sizeInBytes(), Qt::Uninitialized)};
    qToBigEndian<quint32>(argb.constBits(), argb.sizeInBytes() / 4, pixmap.argb.data());
    return pixmap;
}

QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierPixmap &pixmap)
{
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.argb;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierPixmap &pixmap)
{
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.argb;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierToolTip &toolTip)
{
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.icon << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierToolTip &toolTip)
{
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.icon >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}
