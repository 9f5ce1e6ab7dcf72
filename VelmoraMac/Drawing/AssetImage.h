#pragma once

#include "DrawnItem.h"
#include "KeptDrawing.h"

#include <QString>
#include <qqmlintegration.h>

// One of the application's named pictures, resized to the item.
class AssetImage : public DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

public:
    explicit AssetImage(QQuickItem *parent = nullptr);

    [[nodiscard]] QString name() const { return name_; }

    void setName(const QString &name);
    void draw(QPainter &painter) override;

Q_SIGNALS:
    void nameChanged();

private:
    QString name_;
    KeptDrawing drawing_;
};
