#pragma once

#include <QColor>
#include <QObject>
#include <QString>
#include <qqmlintegration.h>

// A copied text on one line of a view.
class LinkLine : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // `text` in one line of `width` points in the application's font, as styled text. What is too long is cut at its end,
    // or in its middle where it would then read like `other`, the same text before or after its cleaning. With a
    // `tint` that can be seen the parts that `other` does not have are in that colour.
    [[nodiscard]] Q_INVOKABLE static QString styled(const QString &text, const QString &other, double width,
                                                    int pixelSize, int weight, const QColor &tint);
};
