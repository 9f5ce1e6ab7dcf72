#include "PictureEffect.h"

#include "PictureFilters.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <utility>

namespace {

// Steps too small to be seen share one picture; the more it is blurred, the larger they are.
constexpr std::array blurLevels = {0.0, 0.5, 1.0, 1.5, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0, 10.0, 12.0, 14.0, 16.0};

std::size_t nearestLevel(double sigma)
{
    const auto *const above = std::lower_bound(blurLevels.begin(), blurLevels.end(), sigma);
    if (above == blurLevels.begin())
        return 0;
    const auto index = static_cast<std::size_t>(above - blurLevels.begin());
    if (above == blurLevels.end() || sigma - *(above - 1) < *above - sigma)
        return index - 1;
    return index;
}

class EffectNode : public QSGNode {
public:
    EffectNode(QQuickWindow *window, std::weak_ptr<TextureImage> reader)
        : window_(window)
        , image_(window->createImageNode())
        , reader_(std::move(reader))
    {
        setFlag(UsePreprocess);
        image_->setFiltering(QSGTexture::Linear);
        image_->setOwnsTexture(true);
        image_->setTexture(window->createTextureFromImage(blank()));
        appendChildNode(image_);
    }

    // `sigma` in pixels.
    void update(QSGDynamicTexture *texture, double sigma, const QRectF &place)
    {
        texture_ = texture;
        level_ = nearestLevel(sigma);
        image_->setRect(place);
        stale_ = true;
    }

    void preprocess() override
    {
        const bool repainted = texture_ != nullptr && texture_->updateTexture();
        if (repainted)
            levels_.clear();
        if (!repainted && !stale_)
            return;
        stale_ = false;
        show(picture());
    }

private:
    static QImage blank()
    {
        QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        return image;
    }

    void show(const QImage &picture)
    {
        if (picture.cacheKey() == shown_)
            return;
        shown_ = picture.cacheKey();
        QSGTexture *texture = window_->createTextureFromImage(picture.isNull() ? blank() : picture,
                                                              QQuickWindow::TextureHasAlphaChannel);
        image_->setTexture(texture);
        image_->setSourceRect(QRectF(QPointF(), texture->textureSize()));
        image_->markDirty(DirtyMaterial | DirtyGeometry);
    }

    QImage picture()
    {
        const std::shared_ptr<TextureImage> reader = reader_.lock();
        if (texture_ == nullptr || !reader)
            return {};
        if (const auto found = levels_.find(level_); found != levels_.end())
            return found->second;
        const QImage result = PictureFilters::blurred(reader->read(texture_), blurLevels[level_]);
        return levels_.emplace(level_, result).first->second;
    }

    QQuickWindow *window_;
    QSGImageNode *image_;
    QPointer<QSGDynamicTexture> texture_;
    std::weak_ptr<TextureImage>
        reader_; // The item's: a node may outlive the application, which a window must not.
    std::size_t level_ = 0;
    std::map<std::size_t, QImage> levels_;
    qint64 shown_ = 0;
    bool stale_ = true;
};

} // namespace

PictureEffect::PictureEffect(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

PictureEffect::~PictureEffect()
{
    release();
}

void PictureEffect::setSource(QQuickItem *source)
{
    if (source == source_)
        return;
    release();
    source_ = source;
    if (source_ != nullptr) {
        connect(source_, &QObject::destroyed, this, [this] {
            source_ = nullptr;
            update();
        });
    }
    update();
    Q_EMIT sourceChanged();
}

void PictureEffect::release()
{
    if (source_ == nullptr)
        return;
    source_->disconnect(this);
    if (followedProvider_)
        followedProvider_->disconnect(this);
    followedProvider_ = nullptr;
    source_ = nullptr;
}

void PictureEffect::setBlurRadius(double radius)
{
    if (radius == blurRadius_)
        return;
    blurRadius_ = radius;
    update();
    Q_EMIT blurRadiusChanged();
}

// Of the source, which has one only while its window is drawn.
QSGTextureProvider *PictureEffect::provider()
{
    QSGTextureProvider *provider = source_ != nullptr ? source_->textureProvider() : nullptr;
    if (provider != nullptr && provider != followedProvider_) {
        followedProvider_ = provider;
        connect(provider, &QSGTextureProvider::textureChanged, this, &QQuickItem::update);
    }
    return provider;
}

QSGNode *PictureEffect::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    auto *node = static_cast<EffectNode *>(old);
    const QSGTextureProvider *provider = this->provider();
    if (provider == nullptr || width() <= 0 || height() <= 0) {
        delete node;
        return nullptr;
    }
    if (!reader_)
        reader_ = std::make_shared<TextureImage>();
    if (node == nullptr)
        node = new EffectNode(window(), reader_);
    node->update(qobject_cast<QSGDynamicTexture *>(provider->texture()),
                 blurRadius_ * window()->effectiveDevicePixelRatio(), boundingRect());
    return node;
}
