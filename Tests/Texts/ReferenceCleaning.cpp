#include "ReferenceCleaning.h"

#include <VelmoraCore/Query/TrackedLinkScanner.h>
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
    const velmora::TrackingRules rules(cleaner.configuration());
    std::vector<velmora::LinkEdit> edits;
    velmora::TrackedLinkScanner links(rules, text, velmora::TextExtent::whole, 0, text.size());
    while (links.next()) {
        velmora::LinkEdit edit{links.begin(), links.end() - links.begin(), {}, {}};
        Items items(edit);
        links.rewrite(edit.replacement, &items);
        edits.push_back(edit);
    }
    return edits;
}
