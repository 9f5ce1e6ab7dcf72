#pragma once

#include <VelmoraLinux/Process/FileDescriptor.h>

#include <QByteArray>
#include <QtGlobal>

#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

struct wl_display;
struct wl_event_source;

// Where a compositor that a test plays listens and works: a socket, and a thread that answers clients.
class CompositorThread {
public:
    // Listens at `path`, as $WAYLAND_DISPLAY names it. Nobody is answered before `begin`.
    explicit CompositorThread(const QByteArray &path);
    ~CompositorThread();
    Q_DISABLE_COPY_MOVE(CompositorThread)

    [[nodiscard]] wl_display *display() const { return display_; }

    void begin();
    // Runs `action` on the thread and waits for its end; clients have then been told, whether they listen or not.
    void run(const std::function<void()> &action);
    // All connections end, and the thread does.
    void end();

private:
    void runTasks();

    wl_display *display_;
    FileDescriptor wakeUp_;
    wl_event_source *wakeUps_; // Has the loop run the tasks.
    std::mutex mutex_;
    std::vector<std::packaged_task<void()>> tasks_;
    std::thread thread_;
};
