#include "ReferenceCleaning.h"

#include <VelmoraCore/Detection/LinkScanner.h>
#include <VelmoraCore/Query/LinkQuery.h>
#include <VelmoraCore/Rules/TrackingRules.h>

#include <optional>
#include <string>

namespace {

// Adds the removed items to an edit.
class Items final : public velmora::CleaningVisitor {
public:
    explicit Items(velmora::LinkEdit &edit)
        : edit_(edit)
    {
    }

    void visitRemovedItem(std::string_view name, std::optional<std::string_view> value) override
    {
        edit_.removedItems.push_back(
            {std::string(name), value ? std::optional<std::string>(*value) : std::nullopt});
    }

    void visitCleanedLink(std::size_t, std::size_t, std::string_view) override {}

private:
    velmora::LinkEdit &edit_;
};

} // namespace

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
        const velmora::LinkQuery query(rules, text, velmora::TextExtent::whole, link);
        if (!query.isTracked())
            continue;
        velmora::LinkEdit edit{
            link.begin, link.end - link.begin, link.kind == Kind::bareWeb ? "http://" : "", {}};
        edit.replacement += text.substr(link.begin, link.query - link.begin);
        Items items(edit);
        query.rewrite(edit.replacement, &items);
        edit.replacement += text.substr(link.fragment, link.end - link.fragment);
        edits.push_back(edit);
    }
    return edits;
}
