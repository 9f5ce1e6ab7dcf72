#include "ReferenceCleaning.h"

#include <VelmoraCore/Detection/LinkScanner.h>
#include <VelmoraCore/Query/LinkQuery.h>
#include <VelmoraCore/Rules/TrackingRules.h>

#include <string>

std::vector<velmora::LinkEdit> referenceEdits(const velmora::LinkCleaner &cleaner, std::string_view text)
{
    using Kind = velmora::FoundLink::Kind;
    const velmora::TrackingRules rules(cleaner.configuration());
    std::vector<velmora::LinkEdit> edits;
    velmora::LinkScanner scanner(text);
    for (velmora::FoundLink link; scanner.next(link);) {
        if ((link.kind != Kind::web && link.kind != Kind::bareWeb) || link.keptAsWritten ||
            link.query == link.fragment)
            continue;
        const velmora::LinkQuery query(rules, text, link);
        if (!query.isTracked())
            continue;
        velmora::LinkEdit edit{
            link.begin, link.end - link.begin, link.kind == Kind::bareWeb ? "http://" : "", {}};
        edit.replacement += text.substr(link.begin, link.query - link.begin);
        query.rewrite(edit.replacement, edit.removedItems);
        edit.replacement += text.substr(link.fragment, link.end - link.fragment);
        edits.push_back(edit);
    }
    return edits;
}
