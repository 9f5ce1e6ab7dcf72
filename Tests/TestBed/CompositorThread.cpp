#include "CompositorThread.h"

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <utility>
#include <wayland-server.h>

namespace {

FileDescriptor listenAt(const QByteArray &path)
{
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    ::unlink(path.constData());
    const bool listens =
        ::bind(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
        ::listen(socket.get(), 8) == 0;
    if (!listens)
        qFatal("no compositor can listen at %s", path.constData());
    return socket;
}

} // namespace

CompositorThread::CompositorThread(const QByteArray &path)
    : display_(wl_display_create())
    , wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    const FileDescriptor socket = listenAt(path);
    wl_display_add_socket_fd(display_, ::dup(socket.get()));
    wakeUps_ = wl_event_loop_add_fd(
        wl_display_get_event_loop(display_), wakeUp_.get(), WL_EVENT_READABLE,
        [](int, std::uint32_t, void *data) {
            static_cast<CompositorThread *>(data)->runTasks();
            return 0;
        },
        this);
}

CompositorThread::~CompositorThread()
{
    end();
    wl_event_source_remove(wakeUps_);
    wl_display_destroy(display_);
}

void CompositorThread::begin()
{
    thread_ = std::thread([this] { wl_display_run(display_); });
}

void CompositorThread::run(const std::function<void()> &action)
{
    std::packaged_task<void()> task([this, &action] {
        action();
        wl_display_flush_clients(display_);
    });
    std::future<void> done = task.get_future();
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
        ::eventfd_write(wakeUp_.get(), 1);
    }
    done.wait();
}

void CompositorThread::end()
{
    if (!thread_.joinable())
        return;
    run([this] { wl_display_terminate(display_); });
    thread_.join();
    wl_display_destroy_clients(display_);
}

void CompositorThread::runTasks()
{
    eventfd_t count = 0;
    ::eventfd_read(wakeUp_.get(), &count);
    std::vector<std::packaged_task<void()>> tasks;
    {
        const std::lock_guard lock(mutex_);
        tasks.swap(tasks_);
    }
    for (auto &task : tasks)
        task();
}
