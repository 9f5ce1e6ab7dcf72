#include <VelmoraCore/Detection/LinkScanner.h>
#include <VelmoraCore/Hosts/HostName.h>
#include <VelmoraCore/LinkDetector.h>
#include <VelmoraCore/Text/Utf8.h>
#include <VelmoraCore/UrlComponents.h>

namespace velmora {

namespace {

std::string urlOf(std::string_view text, const FoundLink &link)
{
    std::string url(link.suppliedScheme());
    url += text.substr(link.begin, link.end - link.begin);
    return url;
}

} // namespace

std::optional<std::string> LinkMatch::host() const
{
    const auto components = UrlComponents::parse(url);
    if (!components || !components->host || components->host->empty())
        return std::nullopt;
    return reportedHost(*components->host);
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): who holds a detector asks it.
std::vector<LinkMatch> LinkDetector::matches(std::string_view text) const
{
    std::vector<LinkMatch> matches;
    LinkScanner scanner(text);
    FoundLink link;
    std::size_t counted = 0;
    std::size_t units = 0;
    while (scanner.next(link)) {
        units += utf8::utf16Length(text.substr(counted, link.begin - counted));
        const std::size_t length = utf8::utf16Length(text.substr(link.begin, link.end - link.begin));
        matches.push_back({units, length, urlOf(text, link)});
        units += length;
        counted = link.end;
    }
    return matches;
}

} // namespace velmora
