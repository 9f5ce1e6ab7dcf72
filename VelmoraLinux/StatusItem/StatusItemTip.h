#pragma once

#include <VelmoraPlatform/Appearance.h>

#include <QRect>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

class TipWindow;

// The tooltip of an icon whose panel shows none: one line of text beside the icon while the pointer hovers over it.
class StatusItemTip : public QObject {
    Q_OBJECT

public:
    // Where the icon is, in points.
    using Place = std::function<std::optional<QRect>()>;

    // `appearance` is used for the whole life of this object.
    StatusItemTip(const Appearance &appearance, Place place);
    ~StatusItemTip() override;

    void setText(const QString &text);

    void pointerEntered();
    // The pointer has left, or a button was pressed.
    void hide();

private:
    void show();

    const Appearance &appearance_;
    Place place_;
    QString text_;
    QTimer hoverTimer_;
    std::unique_ptr<TipWindow> window_;
};
