#pragma once

#include <VelmoraLinux/X11/XcbConnection.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

// The X server that a fuzzer plays. It is linked instead of our connection and of those functions of xcb that write:
// what is asked waits here for the answer that the input gives, and what is written is kept.
struct PlayedServer {
    // What one answer to a reading of a property says.
    struct Property {
        xcb_atom_t type = XCB_NONE;
        std::uint8_t format = 0;
        std::string bytes;
        std::uint32_t bytesAfter = 0;
    };

    using Place = std::pair<xcb_window_t, xcb_atom_t>;

    // Small, so that a short input is a long text.
    static constexpr std::size_t largestChunk = 16;
    // The bits in which the windows of one program differ.
    static constexpr std::uint32_t windowMask = 0xff;

    std::deque<XcbConnection::PropertyHandler> propertyQuestions;
    std::deque<std::pair<std::size_t, XcbConnection::NamesHandler>> nameQuestions;
    std::vector<xcb_atom_t> conversions; // The forms that the owner of the selection was asked for.
    std::vector<std::pair<Place, Property>> written;
    std::vector<xcb_selection_notify_event_t> notices;

    // Answers the oldest question for a property; without one as the server does for a window that is gone.
    void answerProperty(const Property *property);
    void answerNames(FuzzedDataProvider &given, const std::vector<std::string> &possible);
};

// The present one.
PlayedServer &playedServer();
