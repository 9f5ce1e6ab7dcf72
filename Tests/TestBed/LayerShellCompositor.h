#pragma once

#include "CompositorThread.h"
#include "LayerShellServer.h"

#include <deque>
#include <list>
#include <optional>

struct wl_global;
struct wl_interface;
struct wl_resource;

// What a LayerShellServer does on its thread.
class LayerShellServer::Compositor {
public:
    Compositor(const Offer &offer, const QByteArray &path);

    ~Compositor() { thread_.end(); }
    Q_DISABLE_COPY_MOVE(Compositor)

    void run(const std::function<void(Compositor &)> &action)
    {
        thread_.run([this, &action] { action(*this); });
    }

    struct Surface {
        Compositor *compositor = nullptr;
        wl_resource *proxy = nullptr;
        wl_resource *role = nullptr;
        wl_resource *fraction = nullptr;
        Panel pending;
        Panel current;
        wl_resource *buffer = nullptr; // Attached since the last commit.
        std::vector<wl_resource *> callbacks;
        std::uint32_t configuration = 0; // The last serial that was sent, and that was acknowledged.
        std::uint32_t acknowledged = 0;
    };

    Surface &newest() { return *shown().back(); }

    std::vector<Surface *> shown();
    void configure(Surface &surface);
    static void showPicture(Surface &surface);
    [[nodiscard]] wl_resource *outputOf(const Surface &surface, int output) const;

    // What gets the mouse where no window is: a surface with a picture that accepts input, on the lowest layer and all
    // over this screen. Null without one.
    [[nodiscard]] Surface *groundOf(int output);

    void addOutput(double scale);
    void removeOutput(int output);

    // What all devices of the seat of a panel's client are told.
    static void forDevices(const std::vector<wl_resource *> &devices, const Surface &surface,
                           const std::function<void(wl_resource *device)> &tell);

    [[nodiscard]] const std::vector<wl_resource *> &pointers() const { return pointers_; }

    [[nodiscard]] const std::vector<wl_resource *> &keyboards() const { return keyboards_; }

    [[nodiscard]] const std::vector<wl_resource *> &touchScreens() const { return touchScreens_; }

    std::optional<QPoint> pointer;
    QStringList faults;
    QList<std::uint32_t> keyboardRequests;
    bool losesKeyboardOnDemand = false;
    bool holdsConfigurations = false;

private:
    struct Output {
        Compositor *compositor = nullptr;
        int index = 0;
        double scale = 1;
        wl_global *global = nullptr;
        std::vector<wl_resource *> proxies;

        [[nodiscard]] QPoint corner() const;
    };

    template<typename Implementation>
    void offer(const wl_interface &interface, int version, const Implementation &implementation);
    void offerOutput(Output &output);
    void offerSeat();
    static void sendLayout(wl_resource *keyboard);
    void coverPointer(const Surface &surface);
    void commit(Surface &surface);
    static void readPicture(Surface &surface);

    struct Requests;

    CompositorThread thread_;
    std::deque<Output> outputs_; // Clients point to the elements.
    std::list<Surface> surfaces_;
    int bar_;
    std::vector<wl_resource *> pointers_;
    std::vector<wl_resource *> keyboards_;
    std::vector<wl_resource *> touchScreens_;
    std::uint32_t serial_ = 0;
};
