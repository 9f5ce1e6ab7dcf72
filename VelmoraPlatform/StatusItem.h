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

    // An entry with an empty title is a separator.
    QString title;
    Check check = Check::none;
    std::function<void()> action;

    [[nodiscard]] bool isSeparator() const { return title.isEmpty(); }
};

using StatusMenu = std::vector<StatusMenuEntry>;

// The application's icon among the desktop's status icons.
//
// While the desktop has no place for status icons, the item is not shown; it appears as soon as there is one.
class StatusItem {
public:
    struct Events {
        std::function<void()> activated = {};       // Left click; `anchor` gives the position.
        std::function<void()> menuRequested = {};   // Right click, when the application has to show the menu.
        std::function<void()> menuAboutToShow = {}; // The desktop itself opens the exported menu.
        std::function<void()> activatedByKeys = {}; // As a left click, but the pointer is elsewhere.
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

    // Whether the desktop has a place for status icons now.
    [[nodiscard]] virtual bool hasPlace() const = 0;

    // The menu that the desktop may show at any time.
    virtual void setMenu(StatusMenu menu) = 0;

    // The icon's position, as precisely as it is known; nothing when it is not known.
    [[nodiscard]] virtual std::optional<QRect> anchor() const = 0;
    // Whether a press at this point of the desktop is one on the icon.
    [[nodiscard]] virtual bool contains(QPoint point) const = 0;
};
