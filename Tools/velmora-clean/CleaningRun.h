#pragma once

#include "CleanedPiece.h"
#include "CleanerCache.h"
#include "InputFile.h"
#include "Messages.h"
#include "Options.h"
#include "Output.h"
#include "PieceReader.h"

#include <unistd.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

// Does what the command line asks for with each file in turn, and remembers whether all went well.
class CleaningRun {
public:
    explicit CleaningRun(const Options &options);

    // Whether all was read and written.
    bool succeeds();

private:
    using Work = std::function<void(const Piece &, CleanedPiece &)>;
    using Sink = std::function<bool(const Piece &, const CleanedPiece &)>; // False: nothing more is wanted.

    void answerRequests(const std::string &name);
    void cleanText(const std::string &name);
    void cleanInPlace(const std::string &name);
    bool mayBeRead(const InputFile &file);
    void stream(InputFile &file, PieceReader reader, const Work &work, const Sink &sink);
    bool writeOut(const CleanedPiece &result);
    void complain(const std::string &message);

    const Options &options_;
    std::size_t jobs_;
    CleanerCache cleaners_;
    Output output_{STDOUT_FILENO};
    Messages messages_;
    bool failed_ = false;
};
