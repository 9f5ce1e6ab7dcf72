#include "DataControlServer.h"

#include "CompositorThread.h"

#include <QTest>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <data-control-server-header.h>
#include <functional>
#include <wayland-server.h>

namespace {

// What is on one seat's clipboard: another program's copy, or a client's source.
struct Selection {
    DataControlServer::Forms forms;
    DataControlServer::Manner manner = DataControlServer::Manner::prompt;
    wl_resource *source = nullptr;
};

// Blocks as a program does that has nothing else to do.
void writeAll(const FileDescriptor &pipe, const std::string &text, bool again)
{
    std::size_t written = 0;
    while (again || written < text.size()) {
        const std::size_t from = written % text.size();
        const ssize_t size = ::write(pipe.get(), text.data() + from, text.size() - from);
        if (size <= 0)
            return;
        written += static_cast<std::size_t>(size);
    }
}

} // namespace

class DataControlServer::Compositor {
public:
    Compositor(Protocol protocol, int seats, const QByteArray &path);
    ~Compositor();
    Q_DISABLE_COPY_MOVE(Compositor)

    void run(const std::function<void(Compositor &)> &action)
    {
        thread_.run([this, &action] { action(*this); });
    }

    void select(int index, Selection selection);
    void selectPrimary(const Forms &forms);
    void finishDevices();
    void removeSeat(int seat);

    static const std::vector<std::string> &typesOf(wl_resource *source);

    Selection &selection() { return seats_.front().selection; }

    int changes = 0;
    int primaryChanges = 0;
    std::vector<std::string> asked;

private:
    struct Source {
        Compositor *compositor;
        std::vector<std::string> types;
    };

    struct Seat {
        Compositor *compositor = nullptr;
        wl_global *global = nullptr;
        Selection selection;
        std::vector<wl_resource *> devices;
    };

    void bindManager(wl_client *client, std::uint32_t version, std::uint32_t id);
    void addDevice(wl_client *client, std::uint32_t id, Seat &seat);
    wl_resource *makeOffer(wl_resource *device, const Selection &selection);
    void tell(wl_resource *device, const Selection &selection);
    void receive(Selection &selection, const std::string &type, FileDescriptor pipe);

    struct Requests;

    CompositorThread thread_;
    std::vector<Seat> seats_;
    std::vector<std::thread> programs_;
    std::vector<FileDescriptor> heldPipes_; // Of programs that hang.
};

struct DataControlServer::Compositor::Requests {
    static void destroy(wl_client *, wl_resource *resource) { wl_resource_destroy(resource); }

    // The owner of a selection is gone.
    static void forget(wl_resource *resource)
    {
        const std::unique_ptr<Source> gone(&made(resource));
        for (Seat &owned : gone->compositor->seats_) {
            if (owned.selection.source == resource)
                owned.selection = {};
        }
    }

    static Seat &seat(wl_resource *resource)
    {
        return *static_cast<Seat *>(wl_resource_get_user_data(resource));
    }

    static constexpr struct ext_data_control_offer_v1_interface offer = {
        .receive =
            [](wl_client *, wl_resource *resource, const char *type, std::int32_t pipe) {
                Seat &owner = seat(resource);
                owner.compositor->receive(owner.selection, type, FileDescriptor(pipe));
            },
        .destroy = destroy};

    static Source &made(wl_resource *resource)
    {
        return *static_cast<Source *>(wl_resource_get_user_data(resource));
    }

    static constexpr struct ext_data_control_source_v1_interface source = {
        .offer = [](wl_client *, wl_resource *resource,
                    const char *type) { made(resource).types.emplace_back(type); },
        .destroy = destroy};

    static constexpr struct ext_data_control_device_v1_interface device = {
        .set_selection =
            [](wl_client *, wl_resource *resource, wl_resource *source) {
                Seat &target = seat(resource);
                ++target.compositor->changes;
                const auto index = &target - target.compositor->seats_.data();
                target.compositor->select(static_cast<int>(index), {.forms = {}, .source = source});
            },
        .destroy = destroy,
        .set_primary_selection = [](wl_client *, wl_resource *resource,
                                    wl_resource *) { ++seat(resource).compositor->primaryChanges; }};

    static constexpr struct ext_data_control_manager_v1_interface manager = {
        .create_data_source =
            [](wl_client *client, wl_resource *resource, std::uint32_t id) {
                auto *compositor = static_cast<Compositor *>(wl_resource_get_user_data(resource));
                wl_resource *fresh = wl_resource_create(client, &ext_data_control_source_v1_interface,
                                                        wl_resource_get_version(resource), id);
                wl_resource_set_implementation(fresh, &source, new Source{compositor, {}}, forget);
            },
        .get_data_device =
            [](wl_client *client, wl_resource *, std::uint32_t id, wl_resource *seatResource) {
                Seat &target = seat(seatResource);
                target.compositor->addDevice(client, id, target);
            },
        .destroy = destroy};
};

const std::vector<std::string> &DataControlServer::Compositor::typesOf(wl_resource *source)
{
    return Requests::made(source).types;
}

DataControlServer::Compositor::Compositor(Protocol protocol, int seats, const QByteArray &path)
    : thread_(path)
{
    seats_.reserve(static_cast<std::size_t>(seats));
    for (int i = 0; i < seats; ++i) {
        Seat &seat = seats_.emplace_back();
        seat.compositor = this;
        const auto bind = [](wl_client *client, void *data, std::uint32_t version, std::uint32_t id) {
            wl_resource *resource =
                wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
            wl_resource_set_implementation(resource, nullptr, data, nullptr);
        };
        seat.global = wl_global_create(thread_.display(), &wl_seat_interface, 1, &seat, bind);
    }
    static const wl_interface wlrManager = [] {
        wl_interface interface = ext_data_control_manager_v1_interface;
        interface.name = "zwlr_data_control_manager_v1";
        interface.version = 2;
        return interface;
    }();
    const auto bind = [](wl_client *client, void *data, std::uint32_t version, std::uint32_t id) {
        static_cast<Compositor *>(data)->bindManager(client, version, id);
    };
    if (protocol != Protocol::none)
        wl_global_create(thread_.display(),
                         protocol == Protocol::ext ? &ext_data_control_manager_v1_interface : &wlrManager,
                         protocol == Protocol::ext ? 1 : 2, this, bind);
    thread_.begin();
}

DataControlServer::Compositor::~Compositor()
{
    thread_.end();
    heldPipes_.clear();
    for (std::thread &program : programs_)
        program.join();
}

void DataControlServer::Compositor::bindManager(wl_client *client, std::uint32_t version, std::uint32_t id)
{
    wl_resource *manager =
        wl_resource_create(client, &ext_data_control_manager_v1_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(manager, &Requests::manager, this, nullptr);
}

void DataControlServer::Compositor::addDevice(wl_client *client, std::uint32_t id, Seat &seat)
{
    wl_resource *device = wl_resource_create(client, &ext_data_control_device_v1_interface, 1, id);
    wl_resource_set_implementation(device, &Requests::device, &seat,
                                   [](wl_resource *gone) { std::erase(Requests::seat(gone).devices, gone); });
    seat.devices.push_back(device);
    tell(device, seat.selection);
}

wl_resource *DataControlServer::Compositor::makeOffer(wl_resource *device, const Selection &selection)
{
    std::vector<std::string> types;
    for (const auto &[type, text] : selection.forms)
        types.push_back(type);
    if (selection.source != nullptr)
        types = Requests::made(selection.source).types;
    if (types.empty())
        return nullptr;
    wl_resource *offer =
        wl_resource_create(wl_resource_get_client(device), &ext_data_control_offer_v1_interface, 1, 0);
    wl_resource_set_implementation(offer, &Requests::offer, wl_resource_get_user_data(device), nullptr);
    ext_data_control_device_v1_send_data_offer(device, offer);
    for (const std::string &type : types)
        ext_data_control_offer_v1_send_offer(offer, type.c_str());
    return offer;
}

void DataControlServer::Compositor::tell(wl_resource *device, const Selection &selection)
{
    ext_data_control_device_v1_send_selection(device, makeOffer(device, selection));
}

void DataControlServer::Compositor::select(int index, Selection selection)
{
    Seat &seat = seats_.at(static_cast<std::size_t>(index));
    if (seat.selection.source != nullptr && seat.selection.source != selection.source)
        ext_data_control_source_v1_send_cancelled(seat.selection.source);
    seat.selection = std::move(selection);
    asked.clear();
    for (wl_resource *device : seat.devices)
        tell(device, seat.selection);
}

void DataControlServer::Compositor::selectPrimary(const Forms &forms)
{
    for (wl_resource *device : seats_.front().devices)
        ext_data_control_device_v1_send_primary_selection(device, makeOffer(device, {.forms = forms}));
}

void DataControlServer::Compositor::receive(Selection &selection, const std::string &type,
                                            FileDescriptor pipe)
{
    asked.push_back(type);
    if (selection.source != nullptr)
        return ext_data_control_source_v1_send_send(selection.source, type.c_str(), pipe.get());
    if (selection.manner == Manner::silent) {
        heldPipes_.push_back(std::move(pipe));
        return;
    }
    programs_.emplace_back([pipe = std::move(pipe), text = selection.forms[type],
                            again = selection.manner == Manner::endless] { writeAll(pipe, text, again); });
}

void DataControlServer::Compositor::finishDevices()
{
    for (Seat &seat : seats_) {
        for (wl_resource *device : seat.devices)
            ext_data_control_device_v1_send_finished(device);
    }
}

void DataControlServer::Compositor::removeSeat(int seat)
{
    wl_global_remove(seats_.at(static_cast<std::size_t>(seat)).global);
}

DataControlServer::DataControlServer(Protocol protocol, int seats)
    : protocol_(protocol)
    , seats_(seats)
{
    start();
}

DataControlServer::~DataControlServer()
{
    stop();
}

QByteArray DataControlServer::display() const
{
    return folder_.filePath(QStringLiteral("wayland")).toLocal8Bit();
}

void DataControlServer::start()
{
    compositor_ = std::make_unique<Compositor>(protocol_, seats_, display());
}

void DataControlServer::stop()
{
    compositor_.reset();
}

void DataControlServer::run(const std::function<void(Compositor &)> &action)
{
    compositor_->run(action);
}

void DataControlServer::copy(const Forms &forms, Manner manner, int seat)
{
    run([&](Compositor &compositor) { compositor.select(seat, {.forms = forms, .manner = manner}); });
}

void DataControlServer::clear()
{
    run([](Compositor &compositor) { compositor.select(0, {}); });
}

void DataControlServer::selectPrimary(const Forms &forms)
{
    run([&](Compositor &compositor) { compositor.selectPrimary(forms); });
}

std::vector<std::string> DataControlServer::asked()
{
    std::vector<std::string> asked;
    run([&](Compositor &compositor) { asked = compositor.asked; });
    return asked;
}

std::vector<std::string> DataControlServer::offered()
{
    std::vector<std::string> types;
    run([&](Compositor &compositor) {
        if (wl_resource *source = compositor.selection().source)
            types = compositor.typesOf(source);
    });
    return types;
}

int DataControlServer::changes()
{
    int changes = 0;
    run([&](Compositor &compositor) { changes = compositor.changes; });
    return changes;
}

int DataControlServer::primaryChanges()
{
    int changes = 0;
    run([&](Compositor &compositor) { changes = compositor.primaryChanges; });
    return changes;
}

FileDescriptor DataControlServer::paste(const std::string &type)
{
    std::array<int, 2> ends = {-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return {};
    FileDescriptor ours(ends[0]);
    ::fcntl(ours.get(), F_SETFL, O_NONBLOCK);
    FileDescriptor theirs(ends[1]);
    run([&](Compositor &compositor) {
        if (wl_resource *source = compositor.selection().source)
            ext_data_control_source_v1_send_send(source, type.c_str(), theirs.get());
    });
    return ours;
}

std::optional<std::string> DataControlServer::pastedText(const std::string &type)
{
    constexpr int patience = 20'000; // Milliseconds.
    const FileDescriptor pipe = paste(type);
    std::string text;
    const bool isAtEnd = QTest::qWaitFor(
        [&] {
            std::string part(1 << 16, '\0');
            ssize_t size = 0;
            while ((size = ::read(pipe.get(), part.data(), part.size())) > 0)
                text.append(part, 0, static_cast<std::size_t>(size));
            return size == 0;
        },
        patience);
    return isAtEnd ? std::optional(text) : std::nullopt;
}

void DataControlServer::finishDevices()
{
    run([](Compositor &compositor) { compositor.finishDevices(); });
}

void DataControlServer::removeSeat(int seat)
{
    run([&](Compositor &compositor) { compositor.removeSeat(seat); });
}
