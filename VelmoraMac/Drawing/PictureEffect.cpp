#include "PictureEffect.h"

#include "PictureFilters.h"

#include <QQuickWindow>
#include <QSGImageNode>

// Qt shows the pixels of a layer to its own items only.
#include <private/qquickitem_p.h>
#include <private/qsgadaptationlayer_p.h>

#include <cmath>
#include <map>
#include <memory>
#include <utility>

namespace {

// Steps too small to be seen share one picture.
constexpr double blurStep = 0.5;
constexpr double toneSteps = 24;
constexpr size_t keptLevels = 16;

struct Effect {
    double sigma; // In pixels.
    double brightness;
    double saturation;
};

using Level = std::pair<int, int>;

Level levelOf(const Effect &effect)
{
    const double tone = std::max(effect.brightness / 0.1, std::abs(effect.saturation - 1) / 0.2);
    return {static_cast<int>(std::lround(effect.sigma / blurStep)),
            static_cast<int>(std::lround(tone * toneSteps))};
}

class EffectNode : public QSGNode {
public:
    explicit EffectNode(QQuickWindow *window)
        : window_(window)
        , image_(window->createImageNode())
    {
        setFlag(UsePreprocess);
        image_->setFiltering(QSGTexture::Linear);
        image_->setOwnsTexture(true);
        image_->setTexture(window->createTextureFromImage(blank()));
        appendChildNode(image_);
    }

    void update(QSGLayer *layer, const Effect &effect, const QRectF &place)
    {
        layer_ = layer;
        effect_ = effect;
        image_->setRect(place);
        stale_ = true;
    }

    void preprocess() override
    {
        const bool repainted = layer_ != nullptr && layer_->updateTexture();
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
        if (layer_ == nullptr)
            return {};
        const Level level = levelOf(effect_);
        if (const auto found = levels_.find(level); found != levels_.end())
            return found->second;
        if (levels_.size() >= keptLevels)
            levels_.clear();
        const QImage original = layer_->toImage();
        const QImage result = PictureFilters::blurred(
            PictureFilters::adjusted(original, effect_.brightness, effect_.saturation),
            level.first * blurStep);
        return levels_.emplace(level, result).first->second;
    }

    QQuickWindow *window_;
    QSGImageNode *image_;
    QPointer<QSGLayer> layer_;
    Effect effect_{0, 0, 1};
    std::map<Level, QImage> levels_;
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
        // Keeps the layer's item in the scene graph although it is not shown itself.
        QQuickItemPrivate::get(source_)->refFromEffectItem(false);
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
    QQuickItemPrivate::get(source_)->derefFromEffectItem(false);
    source_ = nullptr;
}

void PictureEffect::set(double &field, double value)
{
    if (field == value)
        return;
    field = value;
    update();
    Q_EMIT effectChanged();
}

// Of the layer, which has one only while its window is drawn.
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
    if (node == nullptr)
        node = new EffectNode(window());
    node->update(qobject_cast<QSGLayer *>(provider->texture()),
                 {blurRadius_ * window()->effectiveDevicePixelRatio(), brightness_, saturation_},
                 boundingRect());
    return node;
}
