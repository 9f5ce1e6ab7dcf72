#include "ReferenceCleaning.h"

#include <VelmoraCore/Detection/LinkScanner.h>

#include <string>

std::vector<velmora::LinkEdit> referenceEdits(const velmora::LinkCleaner &cleaner, std::string_view text)
{
    using Kind = velmora::FoundLink::Kind;
    std::vector<velmora::LinkEdit> edits;
    velmora::LinkScanner scanner(text);
    for (velmora::FoundLink link; scanner.next(link);) {
        if ((link.kind != Kind::web && link.kind != Kind::bareWeb) || link.keptAsWritten)
            continue;
        std::string url = link.kind == Kind::bareWeb ? "http://" : "";
        url += text.substr(link.begin, link.end - link.begin);
        velmora::CleanedUrl cleaned = cleaner.cleanUrl(url);
        if (cleaned.url != url)
            edits.push_back({link.begin, link.end - link.begin, cleaned.url, cleaned.removedItems});
    }
    return edits;
}
