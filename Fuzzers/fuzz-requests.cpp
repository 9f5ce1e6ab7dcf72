#include "Expect.h"
#include "PlayedServer.h"

#include <VelmoraLinux/Clipboard/SelectionServer.h>

#include <Tests/Fakes/VirtualTime.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

// How others ask for the text that we put on an X11 selection: for any form, for several at once, in any number; they
// take it piece by piece, stop, end, ask again, and mean another owner, while the text changes and is withdrawn.

namespace {

using namespace std::chrono_literals;

constexpr auto longestSilence = 10s;
constexpr std::ptrdiff_t mostTransfersOfOneProgram = 8;

// A text on its way, as the program sees it that takes it.
struct Transfer {
    PlayedServer::Place place;
    std::string whole;
    std::string taken;
    std::chrono::nanoseconds lastProgress;
};

class Session {
public:
    explicit Session(FuzzedDataProvider &given)
        : given_(given)
    {
    }

    void takeStep()
    {
        switch (given_.ConsumeIntegralInRange(0, 9)) {
        case 0:
            return offer();
        case 1:
            return withdraw();
        case 2:
            return server_.setOwnedSince(someTime());
        case 3:
        case 4:
        case 5:
            return ask();
        case 6:
        case 7:
            return take();
        case 8:
            return given_.ConsumeBool() ? answer() : endWindow();
        default:
            time_.pass(given_.ConsumeIntegralInRange(0, 12000) * 1ms);
        }
    }

    // Everybody who waits is answered, and every text that is taken to its end is whole.
    void end()
    {
        while (!playedServer().propertyQuestions.empty())
            answer();
        expect(playedServer().notices.size() == asked_, "every request has one answer");
        while (!transfers_.empty())
            takeFrom(transfers_.front().place);
        time_.pass(20s);
        expect(time_.waiting() == 0, "nothing is watched any more");
    }

private:
    void offer()
    {
        std::string text = given_.ConsumeRandomLengthString(60);
        text_ = text;
        server_.offer(std::move(text));
    }

    void withdraw()
    {
        text_.reset();
        server_.withdraw();
    }

    xcb_timestamp_t someTime() { return given_.PickValueInArray({0U, 1U, 1000U, 0x80000000U, 0xfffffff0U}); }

    PlayedServer::Place somePlace()
    {
        const auto program =
            given_.ConsumeIntegralInRange<xcb_window_t>(1, 2) * (PlayedServer::windowMask + 1);
        return {program + given_.ConsumeIntegralInRange<xcb_window_t>(0, 2),
                given_.ConsumeIntegralInRange<xcb_atom_t>(1000, 1004)};
    }

    xcb_atom_t someTarget()
    {
        return given_.PickValueInArray(
            {connection_.atom(XcbAtom::utf8String), connection_.atom(XcbAtom::plainText),
             xcb_atom_t(XCB_ATOM_STRING), connection_.atom(XcbAtom::text), connection_.atom(XcbAtom::targets),
             connection_.atom(XcbAtom::timestamp), connection_.atom(XcbAtom::saveTargets),
             connection_.atom(XcbAtom::multiple), xcb_atom_t(0), xcb_atom_t(0x61616161)});
    }

    void ask()
    {
        const PlayedServer::Place place = somePlace();
        xcb_selection_request_event_t request = {};
        request.time = someTime();
        request.requestor = place.first;
        request.selection =
            connection_.atom(given_.ConsumeIntegralInRange(0, 9) == 0 ? XcbAtom::text : XcbAtom::clipboard);
        request.target = someTarget();
        request.property = given_.ConsumeIntegralInRange(0, 9) == 0 ? xcb_atom_t(XCB_NONE) : place.second;
        ++asked_;
        server_.handleRequest(request);
        noteWritten();
        for (const xcb_selection_notify_event_t &notice : playedServer().notices)
            expect(notice.response_type == XCB_SELECTION_NOTIFY,
                   "requests are answered and nothing else is sent");
    }

    // The list of a request for several forms arrives, or does not.
    void answer()
    {
        if (given_.ConsumeIntegralInRange(0, 9) == 0)
            return playedServer().answerProperty(nullptr);
        PlayedServer::Property list;
        list.type = connection_.atom(XcbAtom::atomPair);
        list.format = given_.PickValueInArray<std::uint8_t>({32, 32, 16, 8});
        list.bytesAfter = given_.PickValueInArray({0U, 0U, 0U, 4U});
        for (int words = given_.ConsumeIntegralInRange(0, 24); words > 0; --words) {
            const std::uint32_t word = words % 2 == 0 ? someTarget() : somePlace().second;
            list.bytes.append(reinterpret_cast<const char *>(&word), sizeof word);
        }
        playedServer().answerProperty(&list);
        noteWritten();
    }

    void take()
    {
        if (transfers_.empty())
            return;
        const auto index = given_.ConsumeIntegralInRange<std::size_t>(0, transfers_.size() - 1);
        takeFrom(transfers_.at(index).place);
    }

    // A program has read what was there, and deletes it.
    void takeFrom(PlayedServer::Place place)
    {
        xcb_property_notify_event_t event = {};
        event.window = place.first;
        event.atom = place.second;
        event.state = XCB_PROPERTY_DELETE;
        server_.handlePropertyNotify(event);
        const auto transfer = find(place);
        const bool isServed = !playedServer().written.empty();
        if (!isServed) {
            expect(time_.now() - transfer->lastProgress >= longestSilence, "only who is silent is given up");
            transfers_.erase(transfer);
            return;
        }
        const std::string piece = playedServer().written.front().second.bytes;
        playedServer().written.clear();
        expect(piece.size() <= PlayedServer::largestChunk, "no piece is too large");
        transfer->taken += piece;
        transfer->lastProgress = time_.now();
        expect(transfer->whole.starts_with(transfer->taken), "what comes is what was asked for");
        if (!piece.empty())
            return;
        expect(transfer->taken == transfer->whole, "the end comes behind the whole text");
        transfers_.erase(transfer);
    }

    void endWindow()
    {
        xcb_destroy_notify_event_t event = {};
        event.window = somePlace().first;
        std::erase_if(transfers_,
                      [&event](const Transfer &transfer) { return transfer.place.first == event.window; });
        server_.handleDestroyNotify(event);
    }

    // Finds the texts that have set out.
    void noteWritten()
    {
        for (const auto &[place, property] : std::exchange(playedServer().written, {})) {
            std::erase_if(transfers_,
                          [&place = place](const Transfer &transfer) { return transfer.place == place; });
            if (property.type == connection_.atom(XcbAtom::incr)) {
                transfers_.push_back({place, wholeOf(property), {}, time_.now()});
                expect(served(place.first) <= mostTransfersOfOneProgram, "one program does not take all");
            }
        }
    }

    // Only texts that are announced with their length come in pieces: ours, or the same as Latin-1.
    std::string wholeOf(const PlayedServer::Property &announcement)
    {
        std::uint32_t length = 0;
        expect(announcement.format == 32 && announcement.bytes.size() == sizeof length,
               "a length is announced");
        std::memcpy(&length, announcement.bytes.data(), sizeof length);
        expect(text_.has_value(), "only what is on offer is sent");
        const std::string latin1 =
            QString::fromUtf8(text_->data(), qsizetype(text_->size())).toLatin1().toStdString();
        expect(length == text_->size() || length == latin1.size(), "the length is that of the text");
        return length == text_->size() ? *text_ : latin1;
    }

    std::vector<Transfer>::iterator find(PlayedServer::Place place)
    {
        return std::find_if(transfers_.begin(), transfers_.end(),
                            [&place](const Transfer &transfer) { return transfer.place == place; });
    }

    std::ptrdiff_t served(xcb_window_t window) const
    {
        return std::count_if(transfers_.begin(), transfers_.end(), [this, window](const Transfer &transfer) {
            return (transfer.place.first & ~PlayedServer::windowMask) ==
                       (window & ~PlayedServer::windowMask) &&
                   time_.now() - transfer.lastProgress < longestSilence;
        });
    }

    FuzzedDataProvider &given_;
    std::unique_ptr<XcbConnection> owned_ = XcbConnection::open({});
    XcbConnection &connection_ = *owned_;
    VirtualTime time_;
    SelectionServer server_{connection_, time_};
    std::optional<std::string> text_;
    std::size_t asked_ = 0;
    std::vector<Transfer> transfers_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider given(data, size);
    playedServer() = {};
    Session session(given);
    while (given.remaining_bytes() > 0)
        session.takeStep();
    session.end();
    return 0;
}
