#pragma once

#include "Output.h"

#include <unistd.h>

#include <string>
#include <string_view>

// Standard error: lines to be read, and at most one line of progress, which gives way to them.
class Messages {
public:
    // "velmora-clean: " and the sentence.
    void complain(std::string_view sentence);

    // Whole lines.
    void write(std::string_view lines);

    // Takes the place of the last line of progress.
    void showProgress(std::string_view line);
    void hideProgress();

    bool failed() const { return output_.failed(); }

private:
    Output output_{STDERR_FILENO};
    bool showsProgress_ = false;
};
