#pragma once

#include <QRect>
#include <QSize>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

class QImage;

struct StatusMenuEntry {
    enum class Check { none, off, on };

    // An empty title stands for a separator.
    QString title;
    Check check = Check::none;
    std::function<void()> action;

    [[nodiscard]] bool isSeparator() const { return title.isEmpty(); }
};

using StatusMenu = std::vector<StatusMenuEntry>;

// The application's icon among the desktop's status icons.
//
// Where the desktop has no place for it yet, the item waits and appears as soon as there is one.
class StatusItem {
public:
    struct Events {
        std::function<void()> activated;       // Left click; `anchor` tells where.
        std::function<void()> menuRequested;   // Right click on a desktop that leaves showing the menu to us.
        std::function<void()> menuAboutToShow; // The desktop itself opens the exported menu.
    };

    virtual ~StatusItem() = default;
    virtual void setEvents(Events events) = 0;
    // Only the alpha channel counts: the desktop's colour for status icons fills the shape. Size in points.
    virtual void setTemplateImage(const QImage &image, QSize size) = 0;
    // 1 is the full icon, 0 an invisible one. Setting it ends a fade.
    virtual void setOpacity(double opacity) = 0;
    virtual void fadeOpacity(double opacity, std::chrono::milliseconds duration) = 0;
    virtual void setToolTip(const QString &text) = 0;
    virtual void setVisible(bool visible) = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;

    // The menu that the desktop may show at any time.
    virtual void setMenu(StatusMenu menu) = 0;

    // Where the icon is, as well as the desktop tells; nothing when it does not tell at all.
    [[nodiscard]] virtual std::optional<QRect> anchor() const = 0;
    // Whether a press at this point of the desktop is one on the icon.
    [[nodiscard]] virtual bool contains(QPoint point) const = 0;
};
