#include "PixelBuffers.h"

#include <VelmoraLinux/Process/FileDescriptor.h>

#include <QImage>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <wayland-client-protocol.h>

namespace {
constexpr int bytesPerPixel = 4;
}

struct PixelBuffers::Listeners {
    static constexpr wl_buffer_listener buffer = {.release = [](void *data, wl_buffer *) {
        auto &buffer = *static_cast<Buffer *>(data);
        buffer.isShown = false;
        buffer.owner->released_();
    }};
};

PixelBuffers::PixelBuffers(wl_shm *memory, std::function<void()> released)
    : memory_(memory)
    , released_(std::move(released))
{
}

PixelBuffers::~PixelBuffers()
{
    for (Buffer &buffer : buffers_)
        release(buffer);
}

wl_buffer *PixelBuffers::hold(const QImage &picture)
{
    const auto free =
        std::find_if(buffers_.begin(), buffers_.end(), [](const Buffer &buffer) { return !buffer.isShown; });
    if (free == buffers_.end())
        return nullptr;
    if (free->size != picture.size()) {
        release(*free);
        if (!allocate(*free, picture.size()))
            return nullptr;
    }
    const auto stride = static_cast<std::size_t>(picture.width()) * bytesPerPixel;
    for (int row = 0; row < picture.height(); ++row) {
        auto *place = static_cast<std::byte *>(free->pixels) + static_cast<std::size_t>(row) * stride;
        std::memcpy(place, picture.constScanLine(row), stride);
    }
    free->isShown = true;
    return free->proxy;
}

bool PixelBuffers::allocate(Buffer &buffer, QSize size)
{
    const int stride = size.width() * bytesPerPixel;
    const auto bytes = static_cast<std::size_t>(stride) * static_cast<std::size_t>(size.height());
    const FileDescriptor file(::memfd_create("velmora-panel", MFD_CLOEXEC));
    if (bytes == 0 || file.get() < 0 || ::ftruncate(file.get(), static_cast<off_t>(bytes)) != 0)
        return false;
    void *pixels = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (pixels == MAP_FAILED)
        return false;
    wl_shm_pool *pool = wl_shm_create_pool(memory_, file.get(), static_cast<std::int32_t>(bytes));
    buffer.proxy =
        wl_shm_pool_create_buffer(pool, 0, size.width(), size.height(), stride, WL_SHM_FORMAT_ARGB8888);
    wl_shm_pool_destroy(pool);
    wl_buffer_add_listener(buffer.proxy, &Listeners::buffer, &buffer);
    buffer.owner = this;
    buffer.pixels = pixels;
    buffer.bytes = bytes;
    buffer.size = size;
    return true;
}

void PixelBuffers::release(Buffer &buffer)
{
    if (buffer.proxy == nullptr)
        return;
    wl_buffer_destroy(buffer.proxy);
    ::munmap(buffer.pixels, buffer.bytes);
    buffer = {};
}
