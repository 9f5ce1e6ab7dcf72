#include "Expect.h"

#include <VelmoraLinux/Clipboard/OfferReader.h>
#include <VelmoraLinux/Clipboard/PlainText.h>

#include <QCoreApplication>

#include <Tests/Fakes/VirtualTime.h>
#include <fcntl.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <optional>

// What comes through the pipes of a Wayland clipboard: owners who write in pieces, too much, late or never, and programs
// that paste and read our text as they like. Instead of a compositor the input says what is offered and what is written.

namespace {

using namespace std::chrono_literals;

// Small, so that a short input goes beyond it.
constexpr std::size_t mostBytes = 40;
constexpr std::size_t pageSize = 4096;
constexpr auto longestSilence = 10s;

// The owner of the clipboard.
struct Owner {
    std::vector<std::string> forms;
    FileDescriptor pipe;             // Where it is to write.
    std::string type;                // What it was asked for last.
    std::string written;             // Since then.
    std::optional<std::string> mark; // What it wrote when it was asked whether the text is secret.
};

Owner owner; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the device has no room for it

// Two ends, the first of which is read from.
std::pair<FileDescriptor, FileDescriptor> newPipe()
{
    std::array<int, 2> ends = {};
    expect(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0, "there are pipes");
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

void writeSome(FuzzedDataProvider &given)
{
    const std::string bytes = given.ConsumeRandomLengthString(120);
    if (owner.pipe.isOpen() && write(owner.pipe.get(), bytes.data(), bytes.size()) > 0)
        owner.written += bytes;
}

bool mayBeRead()
{
    const bool isMarked =
        std::find(owner.forms.begin(), owner.forms.end(), PlainText::secretMark) != owner.forms.end();
    return !isMarked || (owner.mark && !PlainText::isSecret(*owner.mark));
}

void readFromOwner(FuzzedDataProvider &given)
{
    VirtualTime time;
    owner = {};
    for (int i = given.ConsumeIntegralInRange(0, 4); i > 0; --i)
        owner.forms.push_back(
            given.PickValueInArray<std::string>({"UTF8_STRING", "text/plain", "text/plain;charset=utf-8",
                                                 "STRING", std::string(PlainText::secretMark)}));
    alignas(WaylandConnection) static std::array<std::byte, sizeof(WaylandConnection)>
        none; // Never looked at.
    PipeWriters writers(time);
    DataControlDevice device(reinterpret_cast<WaylandConnection &>(none), writers, {});
    int answers = 0;
    OfferReader reader(device, time, {.silence = 5s, .total = 15s, .bytes = mostBytes},
                       [&answers](const std::optional<std::string> &text) {
                           ++answers;
                           expect(!text || mayBeRead(), "a text that may be secret is left alone");
                           expect(!text || owner.written.size() <= mostBytes,
                                  "a text that is too long is left alone");
                           expect(!text || text == PlainText::decoded(owner.type, owner.written),
                                  "the text is what the owner has written");
                       });
    for (int step = 0; step < 20 && given.remaining_bytes() > 0; ++step) {
        const int kind = given.ConsumeIntegralInRange(0, 3);
        if (kind < 2)
            writeSome(given);
        else if (kind == 2)
            owner.pipe = {};
        else
            time.pass(given.ConsumeIntegralInRange(0, 6000) * 1ms);
        for (int turn = 0; turn < 3; ++turn)
            QCoreApplication::processEvents();
        expect(answers <= 1, "there is one answer");
    }
    time.pass(15s);
    expect(answers == 1, "there is an answer when the time is over");
}

// A text of any length, with a liking for those that end beside the end of a page, which is what a pipe takes at once.
std::string someText(FuzzedDataProvider &given)
{
    const std::string words = given.ConsumeRandomLengthString(100);
    if (words.empty())
        return words;
    const std::size_t length = given.ConsumeIntegralInRange<std::size_t>(0, 8) * pageSize +
                               given.ConsumeIntegralInRange<std::size_t>(0, 3);
    std::string text;
    while (text.size() < length)
        text += words;
    return given.ConsumeBool() ? text : text.substr(0, length);
}

void writeToPaster(FuzzedDataProvider &given)
{
    VirtualTime time;
    PipeWriters writers(time);
    const std::string text = someText(given);
    auto [end, ours] = newPipe();
    fcntl(ours.get(), F_SETPIPE_SZ, pageSize);
    writers.write(std::move(ours), std::make_shared<const std::string>(text));
    std::string pasted;
    std::string buffer(2 * pageSize, '\0');
    bool isLate = false;
    ssize_t size = -1;
    for (int step = 0; step < 100 && size != 0; ++step) {
        QCoreApplication::processEvents();
        size = read(end.get(), buffer.data(), given.ConsumeIntegralInRange<std::size_t>(1, buffer.size()));
        pasted.append(buffer, 0, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        expect(text.starts_with(pasted), "what is read is ours");
        const int next = given.ConsumeIntegralInRange(0, 30);
        if (next == 1)
            end = {}; // Who pastes has enough.
        if (next == 2)
            time.pass(5s);
        isLate = isLate || time.now() >= longestSilence;
    }
    expect(size != 0 || isLate || pasted == text, "the end comes behind the whole text");
    time.pass(20s);
    expect(time.waiting() == 0, "who does not read is given up");
}

} // namespace

// The device of the fuzzer: without a compositor.
DataControlDevice::DataControlDevice(WaylandConnection &connection, PipeWriters &writers, Handlers handlers)
    : connection_(connection)
    , writers_(writers)
    , handlers_(std::move(handlers))
    , sync_(nullptr)
{
}

DataControlDevice::~DataControlDevice() = default;

const std::vector<std::string> &DataControlDevice::offered() const
{
    return owner.forms;
}

FileDescriptor DataControlDevice::receive(const std::string &type)
{
    auto [end, theirs] = newPipe();
    if (owner.type == PlainText::secretMark)
        owner.mark = owner.written;
    owner.pipe = std::move(theirs);
    owner.type = type;
    owner.written.clear();
    return std::move(end);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int count = 1;
    static std::array<char, 5> name = {"fuzz"};
    static std::array<char *, 2> arguments = {name.data(), nullptr};
    static const bool isReady = [] {
        std::signal(SIGPIPE, SIG_IGN);
        static const QCoreApplication application(count, arguments.data());
        return true;
    }();
    FuzzedDataProvider given(data, size);
    if (isReady && given.ConsumeBool())
        readFromOwner(given);
    else
        writeToPaster(given);
    return 0;
}
