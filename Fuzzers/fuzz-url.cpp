#include "Expect.h"

#include <VelmoraCore/Hosts/HostName.h>
#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/Query/QueryItemReader.h>
#include <VelmoraCore/QueryItem.h>
#include <VelmoraCore/UrlComponents.h>

#include <cstdint>
#include <string>
#include <string_view>

// URL components and cleaning of single URLs.

namespace {

using Configuration = velmora::LinkCleanerConfiguration;

std::string composed(const velmora::UrlComponents &url)
{
    std::string text;
    if (url.scheme)
        text.append(*url.scheme).append(":");
    if (url.host) {
        text += "//";
        if (url.user)
            text += *url.user;
        if (url.password)
            text.append(":").append(*url.password);
        if (url.user)
            text += "@";
        text += *url.host;
        if (url.port)
            text.append(":").append(*url.port);
    }
    text += url.path;
    if (url.query)
        text.append("?").append(*url.query);
    if (url.fragment)
        text.append("#").append(*url.fragment);
    return text;
}

void checkCleaning(std::string_view text, const velmora::UrlComponents &url)
{
    static const velmora::LinkCleaner cleaner(Configuration::withDefaultRules());
    const velmora::CleanedUrl once = cleaner.cleanUrl(text);
    expect(once.removedItems.empty() == (once.url == text),
           "a URL changes exactly when something is removed");
    const auto cleaned = velmora::UrlComponents::parse(once.url);
    expect(cleaned.has_value(), "a cleaned URL is a URL");
    expect(cleaned->scheme == url.scheme && cleaned->host == url.host && cleaned->port == url.port &&
               cleaned->user == url.user && cleaned->path == url.path && cleaned->fragment == url.fragment,
           "only the query changes");
    const velmora::CleanedUrl twice = cleaner.cleanUrl(once.url);
    expect(twice.url == once.url && twice.removedItems.empty(), "a cleaned URL is clean");
}

void checkQuery(std::string_view query)
{
    std::string rewritten;
    velmora::QueryItemReader reader(query);
    for (velmora::QueryItem item; reader.next(item);) {
        std::string name;
        velmora::appendQueryText(name, item.name);
        expect(velmora::percentDecoded(name) == velmora::percentDecoded(item.name),
               "writing keeps the meaning");
        std::string again;
        velmora::appendQueryText(again, name);
        expect(again == name, "writing twice changes nothing more");
        expect(name.find_first_of("&=#") == std::string::npos, "what is written does not fall apart");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    checkQuery(text);
    const std::string host = velmora::comparableHost(text);
    expect(velmora::isWithinDomain("www." + host, host) || host.empty(),
           "a sub-domain lies within its domain");
    const auto url = velmora::UrlComponents::parse(text);
    if (!url)
        return 0;
    expect(composed(*url) == text, "the pieces make up the URL");
    checkCleaning(text, *url);
    return 0;
}
