#pragma once

#include "TextureImage.h"

#include <QPointer>
#include <QQuickItem>
#include <QSGTextureProvider>
#include <qqmlintegration.h>

#include <memory>

// Draws the picture of an item blurred, on the CPU.
//
// Its source is a visible ShaderEffectSource, with the software scene graph. The item there has to include the
// margin into which the blur spreads. Blurred pictures are cached by level until the item's picture changes.
class PictureEffect : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *source READ source WRITE setSource NOTIFY sourceChanged)
    Q_PROPERTY(double blurRadius READ blurRadius WRITE setBlurRadius NOTIFY blurRadiusChanged)

public:
    explicit PictureEffect(QQuickItem *parent = nullptr);
    ~PictureEffect() override;

    [[nodiscard]] QQuickItem *source() const { return source_; }

    void setSource(QQuickItem *source);

    [[nodiscard]] double blurRadius() const { return blurRadius_; } // In points: the Gaussian's sigma.

    void setBlurRadius(double radius);

Q_SIGNALS:
    void sourceChanged();
    void blurRadiusChanged();

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;

private:
    void release();
    [[nodiscard]] QSGTextureProvider *provider();

    QQuickItem *source_ = nullptr;
    QPointer<QSGTextureProvider> followedProvider_;
    double blurRadius_ = 0;
    std::shared_ptr<TextureImage> reader_;
};
