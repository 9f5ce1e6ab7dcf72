#pragma once

#include <VelmoraCore/LinkCleaner.h>

#include <map>
#include <set>
#include <string>
#include <string_view>

// Answers requests that are one JSON object a line.
//
// A request is {"text": "...", "ignored_hosts": ["..."]}; the hosts may be absent or null, other members are
// ignored, of a repeated member the last one counts. Texts are strict: bytes that are not UTF-8 and escapes
// that are half a surrogate pair make the request malformed.
class JsonLines {
public:
    enum class Answer { cleaning, detection };

    // The hosts are ignored in every request, beside those of the request.
    JsonLines(Answer answer, std::set<std::string> ignoredHosts)
        : answer_(answer)
        , ignoredHosts_(std::move(ignoredHosts))
    {
    }

    struct Reply {
        std::string
            line; // One line of JSON, without its line feed; {"error": "..."} for a malformed request.
        std::string problem; // Empty when the request was understood.
    };

    Reply reply(std::string_view request);

    static Reply malformed(std::string_view problem);

private:
    const velmora::LinkCleaner &cleanerFor(std::set<std::string> hosts);

    Answer answer_;
    std::set<std::string> ignoredHosts_;
    // Requests often share their hosts; preparing a cleaner costs more than cleaning a short text.
    std::map<std::set<std::string>, velmora::LinkCleaner> cleaners_;
};
