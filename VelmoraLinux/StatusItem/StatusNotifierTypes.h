#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QImage>
#include <QList>
#include <QMetaType>
#include <QString>

// A picture as StatusNotifierItem sends it: rows of ARGB words, each with the alpha byte first.
struct StatusNotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray argb;

    static StatusNotifierPixmap of(const QImage &image);
};

using StatusNotifierPixmaps = QList<StatusNotifierPixmap>;

struct StatusNotifierToolTip {
    QString iconName;
    StatusNotifierPixmaps icon;
    QString title;
    QString text;
};

QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierPixmap &pixmap);
const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierPixmap &pixmap);
QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierToolTip &toolTip);
const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierToolTip &toolTip);

Q_DECLARE_METATYPE(StatusNotifierPixmap)
Q_DECLARE_METATYPE(StatusNotifierToolTip)
