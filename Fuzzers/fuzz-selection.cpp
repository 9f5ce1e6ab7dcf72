#include "Expect.h"
#include "PlayedServer.h"

#include <VelmoraLinux/Clipboard/PlainText.h>
#include <VelmoraLinux/Clipboard/SelectionReader.h>

#include <Tests/Fakes/VirtualTime.h>

#include <algorithm>
#include <cstdint>

// How the owner of an X11 selection answers: with lists, marks and texts of any form, at once or piece by piece, in any
// order, late, twice or never.

namespace {

using namespace std::chrono_literals;

// Small, so that a short input goes beyond it.
constexpr std::size_t mostBytes = 40;

const std::vector<std::string> names = {"UTF8_STRING",
                                        "STRING",
                                        "TEXT",
                                        "text/plain;charset=utf-8",
                                        "text/plain;charset=utf-16",
                                        std::string(PlainText::secretMark)};

// What the owner has said so far.
struct Said {
    std::vector<std::string> answers; // The bytes of each.
    std::size_t conversions = 0;      // Those that it has begun to answer.
    bool isSecret = false;
};

Said &said()
{
    static Said present;
    return present;
}

void note(const PlayedServer::Property &property, const XcbConnection &connection)
{
    if (property.type == XCB_NONE || playedServer().propertyQuestions.empty())
        return;
    const std::string bytes = property.bytes.substr(0, property.bytes.size() & ~(property.format / 8U - 1));
    said().answers.push_back(bytes);
    const auto &conversions = playedServer().conversions;
    const bool isFirst = std::exchange(said().conversions, conversions.size()) != conversions.size();
    const bool isWhole =
        isFirst && property.type != connection.atom(XcbAtom::incr) && property.bytesAfter == 0;
    if (isWhole && conversions.back() == connection.atom(XcbAtom::passwordManagerHint))
        said().isSecret = said().isSecret || PlainText::isSecret(bytes);
}

// Whether these are the bytes of one answer, or of some behind each other, as a type that the owner may have named.
bool isFromOwner(const std::string &text)
{
    for (auto first = said().answers.begin(); first != said().answers.end(); ++first) {
        std::string whole;
        for (auto last = first; last != said().answers.end() && whole.size() + last->size() <= mostBytes;
             ++last) {
            whole += *last;
            if (std::any_of(names.begin(), names.end(),
                            [&](const std::string &name) { return PlainText::decoded(name, whole) == text; }))
                return true;
        }
    }
    return false;
}

void answerProperty(FuzzedDataProvider &given, const XcbConnection &connection)
{
    if (given.ConsumeIntegralInRange(0, 9) == 0)
        return playedServer().answerProperty(nullptr);
    PlayedServer::Property property;
    property.type =
        given.PickValueInArray({xcb_atom_t(XCB_NONE), xcb_atom_t(XCB_ATOM_ATOM), xcb_atom_t(XCB_ATOM_STRING),
                                connection.atom(XcbAtom::incr), connection.atom(XcbAtom::utf8String),
                                connection.atom(XcbAtom::targets)});
    property.format = given.PickValueInArray<std::uint8_t>({8, 16, 32});
    property.bytesAfter = given.PickValueInArray({0U, 0U, 4U, 0x7fffffffU, 0xffffffffU});
    property.bytes = given.ConsumeBool() ? given.ConsumeRandomLengthString(60) : std::string("secret");
    note(property, connection);
    playedServer().answerProperty(&property);
}

void notify(FuzzedDataProvider &given, const XcbConnection &connection, SelectionReader &reader)
{
    xcb_selection_notify_event_t event = {};
    event.requestor = reader.requestor();
    event.target = given.PickValueInArray(
        {connection.atom(XcbAtom::targets), connection.atom(XcbAtom::passwordManagerHint),
         connection.atom(XcbAtom::utf8String), xcb_atom_t(XCB_ATOM_STRING), xcb_atom_t(0x61616161)});
    event.property =
        given.ConsumeIntegralInRange(0, 4) == 0 ? xcb_atom_t(XCB_NONE) : connection.atom(XcbAtom::transfer);
    reader.handleSelectionNotify(event);
}

void changeProperty(FuzzedDataProvider &given, const XcbConnection &connection, SelectionReader &reader)
{
    xcb_property_notify_event_t event = {};
    event.window = reader.requestor();
    event.atom = connection.atom(XcbAtom::transfer);
    event.state = given.ConsumeBool() ? XCB_PROPERTY_NEW_VALUE : XCB_PROPERTY_DELETE;
    reader.handlePropertyNotify(event);
}

void takeStep(FuzzedDataProvider &given, const XcbConnection &connection, SelectionReader &reader,
              VirtualTime &time)
{
    switch (given.ConsumeIntegralInRange(0, 6)) {
    case 0:
        return notify(given, connection, reader);
    case 1:
        return changeProperty(given, connection, reader);
    case 2:
    case 3:
        return answerProperty(given, connection);
    case 4:
    case 5:
        return playedServer().answerNames(given, names);
    default:
        time.pass(given.ConsumeIntegralInRange(0, 6000) * 1ms);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const std::unique_ptr<XcbConnection> connection = XcbConnection::open({});
    FuzzedDataProvider given(data, size);
    playedServer() = {};
    said() = {};
    VirtualTime time;
    int answers = 0;
    const auto aim = given.ConsumeBool() ? SelectionReader::Aim::text : SelectionReader::Aim::permission;
    auto reader = std::make_unique<SelectionReader>(
        *connection, time, TransferLimits{.silence = 5s, .total = 15s, .bytes = mostBytes}, aim,
        XCB_CURRENT_TIME, [&answers, aim](const std::optional<std::string> &text) {
            ++answers;
            expect(!text || aim == SelectionReader::Aim::text || text->empty(),
                   "who asks for permission gets no text");
            expect(!text || !said().isSecret, "a text that is marked as secret is left alone");
            expect(!text || aim == SelectionReader::Aim::permission || isFromOwner(*text),
                   "a text is what the owner gave, and no longer than the limit");
        });
    while (given.remaining_bytes() > 0) {
        takeStep(given, *connection, *reader, time);
        expect(answers <= 1, "there is one answer");
    }
    const bool ends = size % 2 == 0;
    if (ends)
        time.pass(15s);
    expect(!ends || answers == 1, "there is an answer when the time is over");
    const int before = answers;
    reader.reset();
    while (!playedServer().propertyQuestions.empty() || !playedServer().nameQuestions.empty()) {
        answerProperty(given, *connection);
        playedServer().answerNames(given, names);
    }
    time.pass(20s);
    expect(answers == before, "a reader that is gone says nothing");
    return 0;
}
