#include "Expect.h"
#include "JsonLines.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>

// Requests that are JSON lines.

namespace {

using Json = nlohmann::json;

void checkReply(const JsonLines &requests, std::string_view line)
{
    const JsonLines::Reply reply = requests.reply(line, 1);
    expect(reply.line.find('\n') == std::string::npos, "an answer is one line");
    const Json answer = Json::parse(reply.line, nullptr, false);
    expect(answer.is_object(), "an answer is a JSON object");
    expect(answer.contains("error") == !reply.problem.empty(),
           "an error is named in the answer and beside it");
    if (!reply.problem.empty())
        return;
    const Json request = Json::parse(line, nullptr, false);
    if (answer.contains("original_text"))
        expect(answer["original_text"] == request["text"], "the original text is that of the request");
    else
        expect(answer["links"].is_array(), "a detection answers with links");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    static CleanerCache cleaners({});
    static const JsonLines cleaning(JsonLines::Answer::cleaning, cleaners, "input");
    static const JsonLines detection(JsonLines::Answer::detection, cleaners, "input");
    checkReply(cleaning, text);
    checkReply(detection, text);
    return 0;
}
