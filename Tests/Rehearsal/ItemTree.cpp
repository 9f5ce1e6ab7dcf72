#include "ItemTree.h"

#include <QQuickWindow>
#include <QTextDocumentFragment>

#include <algorithm>
#include <array>

namespace {

constexpr int styledText = 4; // Text.StyledText in Qt Quick.

bool isControl(QAccessible::Role role)
{
    constexpr std::array roles = {QAccessible::Button,  QAccessible::CheckBox,     QAccessible::RadioButton,
                                  QAccessible::PageTab, QAccessible::EditableText, QAccessible::PushButton};
    return std::find(roles.begin(), roles.end(), role) != roles.end();
}

void collectTexts(const QQuickItem &item, QStringList &texts)
{
    if (!item.isVisible() || item.opacity() <= 0)
        return;
    const QString text = item.property("text").toString();
    const bool isStyled = item.property("textFormat").toInt() == styledText;
    const bool shows = item.inherits("QQuickText") || item.inherits("QQuickTextEdit");
    if (shows && !text.isEmpty())
        texts.append(isStyled ? QTextDocumentFragment::fromHtml(text).toPlainText() : text);
    for (const QQuickItem *child : item.childItems())
        collectTexts(*child, texts);
}

void collectControls(QAccessibleInterface *node, std::vector<ItemTree::Control> &controls)
{
    if (node == nullptr || !node->isValid() || node->state().invisible)
        return;
    if (isControl(node->role())) {
        QAccessibleActionInterface *actions = node->actionInterface();
        const QStringList names = actions != nullptr ? actions->actionNames() : QStringList();
        const bool pressable = names.contains(QAccessibleActionInterface::pressAction()) ||
                               names.contains(QAccessibleActionInterface::toggleAction());
        const QObject *object = node->object();
        controls.push_back({node->role(), node->text(QAccessible::Name), pressable,
                            QString::fromLatin1(object != nullptr ? object->metaObject()->className() : "")});
    }
    for (int i = 0; i < node->childCount(); ++i)
        collectControls(node->child(i), controls);
}

} // namespace

QStringList ItemTree::texts(const QQuickItem &root)
{
    QStringList found;
    collectTexts(root, found);
    return found;
}

QQuickItem *ItemTree::control(QQuickItem &root, const QString &name)
{
    if (!root.isVisible())
        return nullptr;
    QAccessibleInterface *node = QAccessible::queryAccessibleInterface(&root);
    if (node != nullptr && isControl(node->role()) && node->text(QAccessible::Name) == name)
        return &root;
    for (QQuickItem *child : root.childItems()) {
        if (QQuickItem *found = control(*child, name))
            return found;
    }
    return nullptr;
}

QPoint ItemTree::middle(const QQuickItem &item)
{
    return item.mapToScene(item.boundingRect().center()).toPoint();
}

std::vector<ItemTree::Control> ItemTree::controls(QQuickWindow &window)
{
    std::vector<Control> found;
    collectControls(QAccessible::queryAccessibleInterface(&window), found);
    return found;
}
