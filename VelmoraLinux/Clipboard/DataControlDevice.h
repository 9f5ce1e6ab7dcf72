#pragma once

#include "PipeWriters.h"

#include <VelmoraLinux/Process/FileDescriptor.h>
#include <VelmoraLinux/Wayland/WaylandConnection.h>

#include <QtGlobal>

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct ext_data_control_device_v1;
struct ext_data_control_manager_v1;
struct ext_data_control_offer_v1;
struct ext_data_control_source_v1;
struct wl_callback;
struct wl_registry;
struct wl_seat;

// The clipboard of a compositor's first seat, by ext-data-control-v1 or, where that is missing, by
// wlr-data-control-unstable-v1. The primary selection is left alone.
//
// Handlers run while the connection dispatches; they must not destroy this object.
class DataControlDevice {
public:
    struct Handlers {
        // The clipboard has new contents; `isInitial`: those that were there when the device was made.
        std::function<void(bool isInitial)> selection = [](bool) {};
        // The text offered last is no longer on the clipboard.
        std::function<void()> cancelled = [] {};
        // The device can be used from now on.
        std::function<void()> ready = [] {};
        // The compositor has taken the clipboard away from us, or the seat is gone.
        std::function<void()> finished = [] {};
    };

    // `writers` serve those who paste. Both have to outlive this object.
    DataControlDevice(WaylandConnection &connection, PipeWriters &writers, Handlers handlers);
    ~DataControlDevice();
    Q_DISABLE_COPY_MOVE(DataControlDevice)

    // Whether the compositor lets us see the clipboard at all. Known after one round trip.
    [[nodiscard]] bool isSupported() const { return manager_ != nullptr; }

    [[nodiscard]] bool isReady() const { return device_ != nullptr; }

    // The names under which the present contents can be had; empty when there are none.
    [[nodiscard]] const std::vector<std::string> &offered() const;
    // Has the owner of the present contents write them, as `type`, into the pipe that is returned.
    [[nodiscard]] FileDescriptor receive(const std::string &type);

    // Puts a text on the clipboard; `mark` is one more name, by which its offer is known again.
    void offerText(std::shared_ptr<const std::string> text, const std::string &mark);
    void clearSelection();

private:
    struct Source {
        DataControlDevice &device;
        ext_data_control_source_v1 *proxy;
        std::shared_ptr<const std::string> text;
        std::string mark;
    };

    struct Global {
        std::uint32_t name = 0; // Zero: not there.
        std::uint32_t version = 0;
    };

    void addGlobal(std::uint32_t name, const std::string &interface, std::uint32_t version);
    void removeGlobal(std::uint32_t name);
    void endSync();
    void bindManager();
    void openDevice();
    void addOffer(ext_data_control_offer_v1 *offer);
    void addType(ext_data_control_offer_v1 *offer, const char *type);
    void destroyOffer(ext_data_control_offer_v1 *offer);
    void setSelection(ext_data_control_offer_v1 *offer);
    void send(const Source &source, const std::string &type, FileDescriptor pipe);
    void cancel(ext_data_control_source_v1 *proxy);
    void finish();

    struct Listeners; // What the protocol calls.

    WaylandConnection &connection_;
    PipeWriters &writers_;
    Handlers handlers_;
    wl_registry *registry_ = nullptr;
    wl_callback *sync_; // Answered when the compositor has told all of its present state.
    Global ext_;
    Global wlr_;
    std::list<std::uint32_t> seats_; // Their names in the registry, in the order of coming.
    ext_data_control_manager_v1 *manager_ = nullptr;
    std::uint32_t seatName_ = 0;
    wl_seat *seat_ = nullptr;
    ext_data_control_device_v1 *device_ = nullptr;
    bool isInitial_ = true; // What was on the clipboard before is being told.
    bool isFinished_ = false;
    std::map<ext_data_control_offer_v1 *, std::vector<std::string>> offers_;
    ext_data_control_offer_v1 *current_ = nullptr;
    std::list<Source> sources_; // The present one last; earlier ones until the compositor lets go of them.
};
