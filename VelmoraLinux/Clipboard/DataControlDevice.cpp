#include "DataControlDevice.h"

#include "PlainText.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <data-control-client-header.h>
#include <utility>
#include <wayland-client-protocol.h>

namespace {

constexpr auto wlrManager = "zwlr_data_control_manager_v1";
constexpr std::uint32_t newestWlr = 2;

// The two protocols share every message. Only the manager is asked for by name.
const wl_interface &wlrManagerInterface()
{
    static const wl_interface renamed = [] {
        wl_interface interface = ext_data_control_manager_v1_interface;
        interface.name = wlrManager;
        interface.version = newestWlr;
        return interface;
    }();
    return renamed;
}

bool isAscii(const std::string &text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char letter) { return static_cast<unsigned char>(letter) < 0x80U; });
}

} // namespace

// Called from C with the object that was given along.
struct DataControlDevice::Listeners {
    static DataControlDevice &self(void *data) { return *static_cast<DataControlDevice *>(data); }

    static constexpr wl_registry_listener registry = {
        .global = [](void *data, wl_registry *, std::uint32_t name, const char *interface,
                     std::uint32_t version) { self(data).addGlobal(name, interface, version); },
        .global_remove = [](void *data, wl_registry *,
                            std::uint32_t name) { self(data).removeGlobal(name); }};

    static constexpr wl_callback_listener allGlobalsKnown = {
        .done = [](void *data, wl_callback *, std::uint32_t) {
            self(data).endSync();
            self(data).bindManager();
        }};

    static constexpr wl_callback_listener initialStateKnown = {
        .done = [](void *data, wl_callback *, std::uint32_t) {
            self(data).endSync();
            self(data).isInitial_ = false;
        }};

    static constexpr ext_data_control_device_v1_listener device = {
        .data_offer = [](void *data, ext_data_control_device_v1 *,
                         ext_data_control_offer_v1 *offer) { self(data).addOffer(offer); },
        .selection = [](void *data, ext_data_control_device_v1 *,
                        ext_data_control_offer_v1 *offer) { self(data).setSelection(offer); },
        .finished = [](void *data, ext_data_control_device_v1 *) { self(data).finish(); },
        .primary_selection = [](void *data, ext_data_control_device_v1 *,
                                ext_data_control_offer_v1 *offer) { self(data).destroyOffer(offer); }};

    static constexpr ext_data_control_offer_v1_listener offer = {
        .offer = [](void *data, ext_data_control_offer_v1 *proxy, const char *type) {
            self(data).addType(proxy, type);
        }};

    static constexpr ext_data_control_source_v1_listener source = {
        .send =
            [](void *data, ext_data_control_source_v1 *, const char *type, std::int32_t pipe) {
                const Source &source = *static_cast<Source *>(data);
                source.device.send(source, type, FileDescriptor(pipe));
            },
        .cancelled =
            [](void *data, ext_data_control_source_v1 *proxy) {
                static_cast<Source *>(data)->device.cancel(proxy);
            }};
};

DataControlDevice::DataControlDevice(WaylandConnection &connection, PipeWriters &writers, Handlers handlers)
    : connection_(connection)
    , writers_(writers)
    , handlers_(std::move(handlers))
    , registry_(wl_display_get_registry(connection.display()))
    , sync_(wl_display_sync(connection.display()))
{
    wl_registry_add_listener(registry_, &Listeners::registry, this);
    wl_callback_add_listener(sync_, &Listeners::allGlobalsKnown, this);
    connection_.flush();
}

DataControlDevice::~DataControlDevice()
{
    endSync();
    for (const Source &source : sources_)
        ext_data_control_source_v1_destroy(source.proxy);
    for (const auto &[offer, types] : offers_)
        ext_data_control_offer_v1_destroy(offer);
    if (device_ != nullptr)
        ext_data_control_device_v1_destroy(device_);
    if (seat_ != nullptr)
        wl_seat_destroy(seat_);
    if (manager_ != nullptr)
        ext_data_control_manager_v1_destroy(manager_);
    wl_registry_destroy(registry_);
    connection_.flush();
}

const std::vector<std::string> &DataControlDevice::offered() const
{
    static const std::vector<std::string> nothing;
    const auto offer = offers_.find(current_);
    return offer == offers_.end() ? nothing : offer->second;
}

FileDescriptor DataControlDevice::receive(const std::string &type)
{
    std::array<int, 2> ends = {-1, -1};
    if (current_ == nullptr || ::pipe2(ends.data(), O_CLOEXEC) != 0)
        return {};
    FileDescriptor ours(ends[0]);
    const FileDescriptor theirs(ends[1]); // Blocks when full, as owners expect.
    ::fcntl(ours.get(), F_SETFL, O_NONBLOCK);
    ext_data_control_offer_v1_receive(current_, type.c_str(), theirs.get());
    connection_.flush();
    return ours;
}

void DataControlDevice::offerText(std::shared_ptr<const std::string> text, const std::string &mark)
{
    if (device_ == nullptr)
        return;
    ext_data_control_source_v1 *proxy = ext_data_control_manager_v1_create_data_source(manager_);
    Source &source =
        sources_.emplace_back(Source{.device = *this, .proxy = proxy, .text = std::move(text), .mark = mark});
    ext_data_control_source_v1_add_listener(proxy, &Listeners::source, &source);
    for (const char *type : {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING"})
        ext_data_control_source_v1_offer(proxy, type);
    // X11 programs behind a bridge take these for Latin-1, others for UTF-8: fine as long as it is the same.
    if (isAscii(*source.text)) {
        for (const char *type : {"STRING", "TEXT"})
            ext_data_control_source_v1_offer(proxy, type);
    }
    ext_data_control_source_v1_offer(proxy, mark.c_str());
    ext_data_control_device_v1_set_selection(device_, proxy);
    connection_.flush();
}

void DataControlDevice::clearSelection()
{
    if (device_ == nullptr)
        return;
    ext_data_control_device_v1_set_selection(device_, nullptr);
    connection_.flush();
}

void DataControlDevice::addGlobal(std::uint32_t name, const std::string &interface, std::uint32_t version)
{
    if (interface == ext_data_control_manager_v1_interface.name) {
        ext_ = {.name = name, .version = version};
    } else if (interface == wlrManager) {
        wlr_ = {.name = name, .version = version};
    } else if (interface == wl_seat_interface.name) {
        seats_.push_back(name);
        openDevice();
    }
}

void DataControlDevice::removeGlobal(std::uint32_t name)
{
    seats_.remove(name);
    if (seat_ != nullptr && name == seatName_)
        finish();
}

void DataControlDevice::endSync()
{
    if (sync_ != nullptr)
        wl_callback_destroy(std::exchange(sync_, nullptr));
}

void DataControlDevice::bindManager()
{
    const bool hasExt = ext_.name != 0;
    if (!hasExt && wlr_.name == 0)
        return;
    void *proxy = hasExt ? wl_registry_bind(registry_, ext_.name, &ext_data_control_manager_v1_interface, 1)
                         : wl_registry_bind(registry_, wlr_.name, &wlrManagerInterface(),
                                            std::min(wlr_.version, newestWlr));
    manager_ = static_cast<ext_data_control_manager_v1 *>(proxy);
    openDevice();
}

void DataControlDevice::openDevice()
{
    if (manager_ == nullptr || device_ != nullptr || isFinished_ || seats_.empty())
        return;
    seatName_ = seats_.front();
    seat_ = static_cast<wl_seat *>(wl_registry_bind(registry_, seatName_, &wl_seat_interface, 1));
    device_ = ext_data_control_manager_v1_get_data_device(manager_, seat_);
    ext_data_control_device_v1_add_listener(device_, &Listeners::device, this);
    sync_ = wl_display_sync(connection_.display());
    wl_callback_add_listener(sync_, &Listeners::initialStateKnown, this);
    connection_.flush();
    handlers_.ready();
}

void DataControlDevice::addOffer(ext_data_control_offer_v1 *offer)
{
    offers_.try_emplace(offer);
    ext_data_control_offer_v1_add_listener(offer, &Listeners::offer, this);
}

void DataControlDevice::addType(ext_data_control_offer_v1 *offer, const char *type)
{
    auto &types = offers_[offer];
    if (types.size() < PlainText::mostTargets)
        types.emplace_back(type);
}

void DataControlDevice::destroyOffer(ext_data_control_offer_v1 *offer)
{
    if (offer == nullptr || offers_.erase(offer) == 0)
        return;
    ext_data_control_offer_v1_destroy(offer);
}

void DataControlDevice::setSelection(ext_data_control_offer_v1 *offer)
{
    destroyOffer(std::exchange(current_, offer));
    handlers_.selection(isInitial_);
}

void DataControlDevice::send(const Source &source, const std::string &type, FileDescriptor pipe)
{
    if (type != source.mark) // That one stands for nothing but itself.
        writers_.write(std::move(pipe), source.text);
}

void DataControlDevice::cancel(ext_data_control_source_v1 *proxy)
{
    const bool isPresent = sources_.back().proxy == proxy;
    sources_.remove_if([proxy](const Source &source) { return source.proxy == proxy; });
    ext_data_control_source_v1_destroy(proxy);
    if (isPresent)
        handlers_.cancelled();
}

void DataControlDevice::finish()
{
    if (!std::exchange(isFinished_, true))
        handlers_.finished();
}
