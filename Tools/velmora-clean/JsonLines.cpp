#include "JsonLines.h"

#include "Printable.h"

#include <VelmoraCore/LinkDetector.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

struct Request {
    std::string text;
    std::set<std::string> hosts;
    std::string problem;
};

// The library's messages begin with its own name and number in brackets, and end with what was read last,
// which can be long.
std::string plainMessage(std::string_view message)
{
    const std::size_t end = message.find("] ");
    if (end != std::string_view::npos)
        message.remove_prefix(end + 2);
    return std::string(message.substr(0, message.find("; last read: ")));
}

// To the library every request is a line 1.
std::string parseMessage(const Json::parse_error &error, std::size_t number)
{
    constexpr std::string_view place = "at line 1,";
    std::string message = plainMessage(error.what());
    const std::size_t begin = message.find(place);
    if (begin != std::string::npos)
        message.replace(begin, place.size(), "at line " + std::to_string(number) + ',');
    return message;
}

void readHosts(const Json &hosts, Request &request)
{
    if (hosts.is_null())
        return;
    if (!hosts.is_array()) {
        request.problem = "\"ignored_hosts\" is no array";
        return;
    }
    for (const Json &host : hosts) {
        if (host.is_string())
            request.hosts.insert(host.get<std::string>());
        else
            request.problem = "\"ignored_hosts\" holds something that is no string";
    }
}

void readMembers(Json &object, Request &request)
{
    if (!object.is_object()) {
        request.problem = "the line is no JSON object";
        return;
    }
    const auto text = object.find("text");
    if (text == object.end() || !text->is_string()) {
        request.problem = text == object.end() ? "\"text\" is missing" : "\"text\" is no string";
        return;
    }
    request.text = std::move(text->get_ref<std::string &>());
    const auto hosts = object.find("ignored_hosts");
    if (hosts != object.end())
        readHosts(*hosts, request);
}

Request readRequest(std::string_view line, std::size_t number)
{
    Request request;
    try {
        Json object = Json::parse(line);
        readMembers(object, request);
    } catch (const Json::parse_error &error) {
        request.problem = parseMessage(error, number);
    } catch (const Json::exception &error) {
        request.problem = plainMessage(error.what());
    }
    return request;
}

// A message may quote bytes that are not UTF-8; everything else is.
std::string written(const OrderedJson &json)
{
    return json.dump(-1, ' ', false, OrderedJson::error_handler_t::replace);
}

std::string describe(const velmora::LinkCleaningResult &result)
{
    OrderedJson items = OrderedJson::array();
    for (const velmora::RemovedQueryItem &item : result.removedItems) {
        items.push_back(OrderedJson{{"name", item.name},
                                    {"value", item.value ? OrderedJson(*item.value) : OrderedJson()}});
    }
    return written(OrderedJson{{"original_text", result.originalText},
                               {"cleaned_text", result.cleanedText},
                               {"did_change", result.didChange()},
                               {"removed_items", std::move(items)}});
}

std::string describeLinks(std::string_view text)
{
    OrderedJson links = OrderedJson::array();
    for (const velmora::LinkMatch &match : velmora::LinkDetector().matches(text))
        links.push_back(OrderedJson{{"offset", match.offset}, {"length", match.length}, {"url", match.url}});
    return written(OrderedJson{{"links", std::move(links)}});
}

JsonLines::Reply malformed(std::string_view problem)
{
    return {written(OrderedJson{{"error", problem}}), std::string(problem)};
}

} // namespace

void JsonLines::answer(const Piece &piece, CleanedPiece &result) const
{
    if (piece.kind == Piece::Kind::restOfTooLong)
        return;
    std::string_view rest = piece.text();
    for (std::size_t number = piece.firstLine; !rest.empty(); ++number) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        answerLine(line, number, result);
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
}

void JsonLines::answerLine(std::string_view line, std::size_t number, CleanedPiece &result) const
{
    if (line.find_first_not_of(" \t\r") != std::string_view::npos) {
        const Reply answer =
            line.size() > longestRequest ? malformed("the line is too long") : reply(line, number);
        result.output += answer.line;
        if (!answer.problem.empty()) {
            result.failed = true;
            result.messages.append("velmora-clean: ").append(name_).append(1, ':');
            result.messages.append(std::to_string(number)).append(": ");
            result.messages.append(printable(answer.problem)).append(1, '\n');
        }
    }
    result.output += '\n';
}

JsonLines::Reply JsonLines::reply(std::string_view requestLine, std::size_t number) const
{
    const Request request = readRequest(requestLine, number);
    if (!request.problem.empty())
        return malformed(request.problem);
    if (answer_ == Answer::detection)
        return {describeLinks(request.text), {}};
    return {describe(cleaners_.cleanerFor(request.hosts)->clean(request.text)), {}};
}
