#pragma once

#include <string>
#include <string_view>

// Where results go, byte by byte as they are.
class Output {
public:
    explicit Output(int descriptor)
        : descriptor_(descriptor)
    {
    }

    // Hands everything to the system before it returns. After a failure nothing more is written.
    void write(std::string_view text);

    bool failed() const { return error_ != 0; }

    // The reader went away: nobody wants the rest, which is no error worth a message.
    bool readerLeft() const;
    std::string problem() const;

private:
    int descriptor_;
    int error_ = 0;
};
