#pragma once

#include <QQuickPaintedItem>
#include <QString>
#include <qqmlintegration.h>

// One of the application's named pictures, resized to the item.
class AssetImage : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

public:
    explicit AssetImage(QQuickItem *parent = nullptr);

    [[nodiscard]] QString name() const { return name_; }

    void setName(const QString &name);
    void paint(QPainter *painter) override;

Q_SIGNALS:
    void nameChanged();

private:
    QString name_;
};
