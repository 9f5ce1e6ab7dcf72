#pragma once

#include <string>
#include <string_view>

// Where results go: gathers small pieces and writes them in large ones.
class Output {
public:
    explicit Output(int descriptor)
        : descriptor_(descriptor)
    {
    }

    void write(std::string_view text);
    // Hands everything gathered to the system.
    void flush();

    // After a failure nothing more is written.
    bool failed() const { return error_ != 0; }

    // The reader went away: nobody wants the rest, which is no error worth a message.
    bool readerLeft() const;
    std::string problem() const;

private:
    void writeThrough(std::string_view text);

    int descriptor_;
    int error_ = 0;
    std::string gathered_;
};
