#include "IgnoredHost.h"

#include <VelmoraCore/Unicode.h>
#include <VelmoraCore/UrlComponents.h>

#include <algorithm>

namespace {

// What no host holds, beside blanks and controls.
constexpr std::string_view foreign = "!\"#$&'()*+,/;<=>?@[\\]^`{|}";

bool isName(std::string_view host)
{
    return host.find_first_not_of('.') != std::string_view::npos &&
           std::all_of(host.begin(), host.end(), [](char c) {
               return (c < '\0' || c > ' ') && c != '\x7F' && foreign.find(c) == std::string_view::npos;
           });
}

bool isLiteral(std::string_view host)
{
    return host.size() > 2 && host.front() == '[';
}

// An IPv6 address without its brackets.
bool isBareAddress(std::string_view text)
{
    return text.find(':') != text.rfind(':') &&
           text.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
}

bool hasAuthority(std::string_view text)
{
    const std::size_t mark = text.find("://");
    return mark != std::string_view::npos && text.find_first_of("/?#") == mark + 1;
}

} // namespace

std::optional<std::string> ignoredHost(std::string_view written)
{
    constexpr std::string_view anySubDomain = "*.";
    std::string url(velmora::trimmedWhitespaceAndNewlines(written));
    if (isBareAddress(url))
        url = '[' + url + ']';
    const bool isWholeUrl = hasAuthority(url);
    if (!isWholeUrl)
        url.insert(0, url.starts_with("//") ? "http:" : "http://");
    const std::size_t begin = url.find("://") + 3;
    if (url.compare(begin, anySubDomain.size(), anySubDomain) == 0)
        url.erase(begin, anySubDomain.size());
    const std::optional<velmora::UrlComponents> components = velmora::UrlComponents::parse(url);
    // An e-mail address is no host.
    if (!components || !components->host || (components->user && !isWholeUrl))
        return std::nullopt;
    const std::string_view host = *components->host;
    return isLiteral(host) || isName(host) ? std::optional<std::string>(host) : std::nullopt;
}
