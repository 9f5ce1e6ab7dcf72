#pragma once

#include <VelmoraPlatform/StatusItem.h>

#include <QImage>
#include <QStringList>

using namespace Qt::StringLiterals;

// A status item in memory; a test clicks it through `events`.
class FakeStatusItem final : public StatusItem {
public:
    void setEvents(Events newEvents) override { events = std::move(newEvents); }

    void setTemplateImage(const QImage &image, QSize size) override
    {
        templateImage = image;
        templateSize = size;
    }

    void setOpacity(double newOpacity) override
    {
        opacity = newOpacity;
        log.append(QString::number(newOpacity));
    }

    void fadeOpacity(double newOpacity, std::chrono::milliseconds duration) override
    {
        opacity = newOpacity;
        log.append(u"%1 in %2 ms"_s.arg(newOpacity).arg(duration.count()));
    }

    void setToolTip(const QString &text) override { toolTip = text; }

    void setVisible(bool newVisible) override { visible = newVisible; }

    [[nodiscard]] bool isVisible() const override { return visible; }

    [[nodiscard]] bool hasPlace() const override { return place.has_value(); }

    void setMenu(StatusMenu newMenu) override { menu = std::move(newMenu); }

    [[nodiscard]] std::optional<QRect> anchor() const override { return place; }

    [[nodiscard]] bool contains(QPoint point) const override { return place && place->contains(point); }

    Events events;
    QImage templateImage;
    QSize templateSize;
    double opacity = -1;
    QStringList log; // Every opacity that was set, in order.
    QString toolTip;
    bool visible = true;
    StatusMenu menu;
    std::optional<QRect> place = QRect(900, 2, 24, 24);
};
