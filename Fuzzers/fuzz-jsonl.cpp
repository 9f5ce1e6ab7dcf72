#include "Expect.h"
#include "JsonLines.h"
#include "LineSplitter.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

// Requests that are JSON lines.

namespace {

using Json = nlohmann::json;

std::vector<std::string> linesOf(std::string_view text, std::size_t pieceSize)
{
    std::vector<std::string> lines;
    LineSplitter splitter(64, [&lines](std::string_view line, bool) { lines.emplace_back(line); });
    for (std::size_t at = 0; at < text.size(); at += pieceSize)
        splitter.add(text.substr(at, pieceSize));
    splitter.finish();
    return lines;
}

void checkReply(JsonLines &requests, std::string_view line)
{
    const JsonLines::Reply reply = requests.reply(line);
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
    static JsonLines cleaning(JsonLines::Answer::cleaning, {});
    static JsonLines detection(JsonLines::Answer::detection, {});
    checkReply(cleaning, text);
    checkReply(detection, text);
    expect(linesOf(text, 1) == linesOf(text, size + 1), "lines do not depend on how they arrive");
    return 0;
}
