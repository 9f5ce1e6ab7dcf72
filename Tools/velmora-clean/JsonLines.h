#pragma once

#include "CleanedPiece.h"
#include "CleanerCache.h"
#include "PieceReader.h"

#include <cstddef>
#include <string>
#include <string_view>

// Answers requests that are one JSON object a line.
//
// A request is {"text": "...", "ignored_hosts": ["..."]}; the hosts may be absent or null, other members are
// ignored, of a repeated member the last one counts. Texts are strict: bytes that are not UTF-8 and escapes
// that are half a surrogate pair make the request malformed. Any thread may call this.
class JsonLines {
public:
    enum class Answer { cleaning, detection };

    // `name` stands before the messages about malformed requests.
    JsonLines(Answer answer, CleanerCache &cleaners, std::string name)
        : answer_(answer)
        , cleaners_(cleaners)
        , name_(std::move(name))
    {
    }

    // Longer requests are refused; their lines are not held in memory.
    static constexpr std::size_t longestRequest = std::size_t{256} * 1024 * 1024;

    // Answers each line by a line, a blank one by a blank one, so that answers stand where their requests
    // stand.
    void answer(const Piece &piece, CleanedPiece &result) const;

    struct Reply {
        std::string
            line; // One line of JSON, without its line feed; {"error": "..."} for a malformed request.
        std::string problem; // Empty when the request was understood.
    };

    // The answer to one request; its problem names the line by `number`.
    Reply reply(std::string_view request, std::size_t number) const;

private:
    void answerLine(std::string_view line, std::size_t number, CleanedPiece &result) const;

    Answer answer_;
    CleanerCache &cleaners_;
    std::string name_;
};
