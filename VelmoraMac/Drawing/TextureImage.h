#pragma once

#include <QImage>
#include <QQuickRenderControl>
#include <QQuickWindow>

#include <memory>

class QSGTexture;
class TextureItem;

// Reads the pixels of a texture of the software scene graph: a window that is never shown draws it into an image.
class TextureImage {
public:
    TextureImage();
    ~TextureImage();
    TextureImage(const TextureImage &) = delete;
    TextureImage &operator=(const TextureImage &) = delete;

    [[nodiscard]] QImage read(QSGTexture *texture);

private:
    QQuickRenderControl control_;
    QQuickWindow window_;
    std::unique_ptr<TextureItem> item_;
};
