#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

// Cuts a stream into lines without their line feeds. A line longer than the limit is not held: its beginning
// is handed over, marked as too long, and the rest dropped.
class LineSplitter {
public:
    using Receiver = std::function<void(std::string_view line, bool tooLong)>;

    LineSplitter(std::size_t longestLine, Receiver receiver)
        : longestLine_(longestLine)
        , receiver_(std::move(receiver))
    {
    }

    void add(std::string_view piece);
    // Hands over a last line that has no line feed.
    void finish();

private:
    void append(std::string_view part);
    void endLine();

    std::size_t longestLine_;
    Receiver receiver_;
    std::string line_;
    bool tooLong_ = false;
};
