#include "JsonLines.h"

#include <VelmoraCore/LinkDetector.h>

#include <nlohmann/json.hpp>
#include <utility>

namespace {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

constexpr std::size_t manyCleaners = 256;

struct Request {
    std::string text;
    std::set<std::string> hosts;
    std::string problem;
};

// The library's messages begin with its own name and number in brackets.
std::string plainMessage(std::string_view message)
{
    const std::size_t end = message.find("] ");
    return std::string(end == std::string_view::npos ? message : message.substr(end + 2));
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

Request readRequest(std::string_view line)
{
    Request request;
    try {
        Json object = Json::parse(line);
        readMembers(object, request);
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

} // namespace

JsonLines::Reply JsonLines::malformed(std::string_view problem)
{
    return {written(OrderedJson{{"error", problem}}), std::string(problem)};
}

JsonLines::Reply JsonLines::reply(std::string_view requestLine)
{
    Request request = readRequest(requestLine);
    if (!request.problem.empty())
        return malformed(request.problem);
    if (answer_ == Answer::detection)
        return {describeLinks(request.text), {}};
    return {describe(cleanerFor(std::move(request.hosts)).clean(request.text)), {}};
}

const velmora::LinkCleaner &JsonLines::cleanerFor(std::set<std::string> hosts)
{
    const auto known = cleaners_.find(hosts);
    if (known != cleaners_.end())
        return known->second;
    if (cleaners_.size() >= manyCleaners)
        cleaners_.clear();
    using Configuration = velmora::LinkCleanerConfiguration;
    std::set<std::string> all = ignoredHosts_;
    all.insert(hosts.begin(), hosts.end());
    const Configuration configuration(all, Configuration::defaultTrackedParameterNames(),
                                      Configuration::defaultTrackedParameterPrefixes(),
                                      Configuration::defaultValueSensitiveTrackedParameters());
    return cleaners_.emplace(std::move(hosts), velmora::LinkCleaner(configuration)).first->second;
}
