#include "Expect.h"

#include <VelmoraCore/Detection/LinkScanner.h>
#include <VelmoraCore/LinkDetector.h>
#include <VelmoraCore/Text/Utf8.h>
#include <VelmoraCore/UrlComponents.h>

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

// Finding links.

namespace {

bool endsLinks(char c)
{
    return static_cast<unsigned char>(c) <= ' ' || c == '<' || c == '>' || c == '\x7F';
}

void checkLink(std::string_view text, const velmora::FoundLink &link)
{
    using Kind = velmora::FoundLink::Kind;
    const std::string_view found = text.substr(link.begin, link.end - link.begin);
    expect(std::none_of(found.begin(), found.end(), endsLinks),
           "no link holds a blank, control or angle bracket");
    expect(velmora::utf8::isWellFormed(found), "no link holds bytes that are not UTF-8");
    if (link.kind != Kind::web && link.kind != Kind::bareWeb)
        return;
    expect(link.begin <= link.hostBegin && link.hostBegin < link.hostEnd && link.hostEnd <= link.query &&
               link.query <= link.fragment && link.fragment <= link.end,
           "the pieces of a link stand in order");
    if (link.kind == Kind::web) {
        const auto url = velmora::UrlComponents::parse(found);
        expect(url && url->host == text.substr(link.hostBegin, link.hostEnd - link.hostBegin),
               "a web link is a URL");
        expect(url->query.has_value() == (link.query != link.fragment),
               "the query stands where it was found");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    std::size_t end = 0;
    std::vector<velmora::FoundLink> links;
    velmora::LinkScanner scanner(text);
    for (velmora::FoundLink link; scanner.next(link); end = link.end) {
        expect(link.begin >= end && link.begin < link.end && link.end <= text.size(), "links do not overlap");
        checkLink(text, link);
        links.push_back(link);
    }
    const std::vector<velmora::LinkMatch> matches = velmora::LinkDetector().matches(text);
    expect(matches.size() == links.size(), "every link is a match");
    for (std::size_t i = 0; i < links.size(); ++i) {
        expect(matches[i].offset == velmora::utf8::utf16Length(text.substr(0, links[i].begin)),
               "offsets count UTF-16 units");
    }
    return 0;
}
