#pragma once

#include <QSize>
#include <QtGlobal>

#include <array>
#include <cstddef>
#include <functional>

class QImage;
struct wl_buffer;
struct wl_shm;

// Two pictures in memory shared with the compositor: one is shown while the next one is drawn.
class PixelBuffers {
public:
    // `released` runs when the compositor gives one of them back.
    PixelBuffers(wl_shm *memory, std::function<void()> released);
    ~PixelBuffers();
    Q_DISABLE_COPY_MOVE(PixelBuffers)

    // A buffer with this picture, not used by the compositor. Null while it uses both, or without memory.
    [[nodiscard]] wl_buffer *hold(const QImage &picture);

private:
    struct Buffer {
        PixelBuffers *owner = nullptr;
        wl_buffer *proxy = nullptr;
        void *pixels = nullptr;
        std::size_t bytes = 0;
        QSize size;
        bool isShown = false;
    };

    [[nodiscard]] bool allocate(Buffer &buffer, QSize size);
    static void release(Buffer &buffer);

    struct Listeners;

    wl_shm *memory_;
    std::function<void()> released_;
    std::array<Buffer, 2> buffers_;
};
