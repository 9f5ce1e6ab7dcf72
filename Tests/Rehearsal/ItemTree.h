#pragma once

#include <QAccessible>
#include <QQuickItem>
#include <QString>
#include <QStringList>

#include <vector>

// The texts and controls of a view, as a user finds them.
namespace ItemTree {

// The texts that can be seen in `root`, from first to last child.
[[nodiscard]] QStringList texts(const QQuickItem &root);

// The first item in `root` with this accessible name that can be pressed, chosen or edited; null when there is none.
[[nodiscard]] QQuickItem *control(QQuickItem &root, const QString &name);

// The middle of `item` in its window.
[[nodiscard]] QPoint middle(const QQuickItem &item);

struct Control {
    QAccessible::Role role;
    QString name;
    bool canBePressed;
    QString type; // The item's class, to find it by.
};

// Every control of the window, as assistive tools find them.
[[nodiscard]] std::vector<Control> controls(QQuickWindow &window);

} // namespace ItemTree
