#include "DrawnItem.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGRenderNode>
#include <QSGRendererInterface>

namespace {

// Aligned edges and antialiasing reach a little beyond the item.
constexpr double margin = 2;

class DrawingNode : public QSGRenderNode {
public:
    explicit DrawingNode(DrawnItem &item)
        : item_(item)
    {
    }

    void follow() { rect_ = item_.boundingRect().adjusted(-margin, -margin, margin, margin); }

    [[nodiscard]] RenderingFlags flags() const override { return BoundedRectRendering; }

    [[nodiscard]] QRectF rect() const override { return rect_; }

    void render(const RenderState *state) override
    {
        QQuickWindow *window = item_.window();
        auto *painter = static_cast<QPainter *>(
            window->rendererInterface()->getResource(window, QSGRendererInterface::PainterResource));
        if (painter == nullptr)
            return;
        painter->save();
        if (const QRegion *clip = state->clipRegion(); clip != nullptr && !clip->isEmpty())
            painter->setClipRegion(*clip);
        painter->setTransform(matrix()->toTransform());
        painter->setOpacity(inheritedOpacity());
        painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        item_.draw(*painter);
        painter->restore();
    }

private:
    DrawnItem &item_; // Deletes this node before its own end.
    QRectF rect_;
};

} // namespace

DrawnItem::DrawnItem(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

QSGNode *DrawnItem::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    auto *node = static_cast<DrawingNode *>(old);
    if (width() <= 0 || height() <= 0) {
        delete node;
        return nullptr;
    }
    if (node == nullptr)
        node = new DrawingNode(*this);
    node->follow();
    node->markDirty(QSGNode::DirtyMaterial | QSGNode::DirtyGeometry);
    return node;
}
