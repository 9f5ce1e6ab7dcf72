#pragma once

#include <VelmoraPlatform/Appearance.h>

#include <QRect>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

class TipWindow;

// The tooltip of an icon whose panel shows none of its own: a line of text beside it while the pointer rests
// there.
class StatusItemTip : public QObject {
    Q_OBJECT

public:
    // Where the icon is, in points.
    using Place = std::function<std::optional<QRect>()>;

    // `appearance` outlives this object.
    StatusItemTip(const Appearance &appearance, Place place);
    ~StatusItemTip() override;

    void setText(const QString &text);

    void pointerEntered();
    // It left, or does something else than rest.
    void hide();

private:
    void show();

    const Appearance &appearance_;
    Place place_;
    QString text_;
    QTimer rest_;
    std::unique_ptr<TipWindow> window_;
};
