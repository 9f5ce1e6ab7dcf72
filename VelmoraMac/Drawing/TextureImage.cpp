#include "TextureImage.h"

#include <QQuickItem>
#include <QQuickRenderTarget>
#include <QSGImageNode>
#include <QSGTexture>

class TextureItem : public QQuickItem {
public:
    TextureItem() { setFlag(ItemHasContents); }

    void show(QSGTexture *texture)
    {
        texture_ = texture;
        if (texture != nullptr)
            setSize(texture->textureSize());
        update();
    }

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *) override
    {
        delete old; // What it draws is new each time, and its texture may be gone.
        if (texture_ == nullptr)
            return nullptr;
        QSGImageNode *image = window()->createImageNode();
        image->setTexture(texture_);
        image->setRect(boundingRect());
        image->setSourceRect(boundingRect());
        return image;
    }

private:
    QSGTexture *texture_ = nullptr;
};

TextureImage::TextureImage()
    : window_(&control_)
    , item_(std::make_unique<TextureItem>())
{
    window_.setColor(Qt::transparent);
    window_.setFlags(Qt::Popup); // Never shown: other windows would be told of to assistive tools.
    item_->setParentItem(window_.contentItem());
}

TextureImage::~TextureImage() = default;

QImage TextureImage::read(QSGTexture *texture)
{
    QImage image(texture->textureSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    window_.setRenderTarget(QQuickRenderTarget::fromPaintDevice(&image));
    window_.resize(image.size());
    item_->show(texture);
    control_.polishItems();
    control_.sync();
    control_.render();
    return image;
}
