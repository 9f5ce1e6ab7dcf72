#pragma once

#include <VelmoraCore/Detection/LinkScanner.h>
#include <VelmoraCore/Query/LinkQuery.h>

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

// Finds the web links of a text that have something to remove, from left to right.
//
// Of neighbours without a blank between them, where one could become part of the other, either all are given or
// none: none if cleaning them would make a text in which there is something to remove again.
class TrackedLinkScanner {
public:
    // Looks at whole words, from `begin` to before `end`. Text and rules have to outlive this object.
    TrackedLinkScanner(const TrackingRules &rules, std::string_view text, TextExtent extent,
                       std::size_t begin, std::size_t end)
        : rules_(rules)
        , text_(text)
        , extent_(extent)
        , scanner_(text, begin, end)
    {
    }

    // Goes on in another part of the text.
    void look(std::size_t begin, std::size_t end) { scanner_ = LinkScanner(text_, begin, end); }

    // False after the last one.
    bool next();

    std::size_t begin() const { return link_.begin; }

    std::size_t end() const { return link_.end; }

    // Appends the link as it is to be, and shows the removed parameters to the visitor, if there is one.
    void rewrite(std::string &output, CleaningVisitor *visitor) const;

private:
    void judgeNeighbours(FoundLink link);
    bool hasTrackedLink(std::string_view text, std::size_t begin, std::size_t end) const;

    const TrackingRules &rules_;
    std::string_view text_;
    TextExtent extent_;
    LinkScanner scanner_;
    FoundLink link_;
    std::optional<LinkQuery> query_;
    std::size_t judgedEnd_ = 0; // Links that begin before this have been judged with their neighbours,
    std::size_t keptEnd_ = 0;   // and stay as they are before this.
};

} // namespace velmora
