#pragma once

#include <VelmoraCore/CleaningVisitor.h>
#include <VelmoraCore/Detection/LinkScanner.h>
#include <VelmoraCore/Query/QueryCleaner.h>
#include <VelmoraCore/Query/ValueEnd.h>
#include <VelmoraCore/Rules/TrackingRules.h>

#include <string>
#include <string_view>

namespace velmora {

// The query of a web link that stands in a text.
//
// More careful than detection, because what it takes away is lost: of the parameter that ends the link only
// what is certain to be its value goes, and a link stays as it is where the text that follows it depends on
// what would go or would become part of the link.
class LinkQuery {
public:
    // The link, which has a query, may lose its end: what stands there is the text's. Text and rules have to
    // outlive this object.
    LinkQuery(const TrackingRules &rules, std::string_view text, TextExtent extent, FoundLink &link);

    // Whether anything is to be removed.
    bool isTracked() const { return isTracked_; }

    // Whether the query holds a tracking parameter, removed or not, and taking it away may change where links end, up
    // to `endOfNeighbours`: what follows may become part of this one, or a link within it be one of its own.
    bool mayMoveEnds() const { return mayMoveEnds_; }

    // Where the word ends that a link with this end stands in, a fixed number of bytes behind it at most.
    static std::size_t endOfNeighbours(std::string_view text, std::size_t linkEnd);

    // For a tracked query: appends the link as it is to be, with a scheme, and shows the removed parameters to the
    // visitor, if there is one.
    void rewrite(std::string &output, CleaningVisitor *visitor) const;

private:
    bool decide();

    bool endsLink() const { return link_.fragment == link_.end; }

    bool isFormat() const;
    bool leaveToText();
    bool hasNeighbours() const;
    bool holdsLink() const;
    bool wouldJoin() const;
    bool isCleanedByItself(std::size_t query) const;
    QueryCleaner cleaner() const;

    const TrackingRules &rules_;
    std::string_view text_;
    TextExtent extent_;
    FoundLink &link_;
    std::size_t foundEnd_; // Of the link as it was found.
    QueryCleaner query_;
    bool mayMoveEnds_ = false;
    bool isTracked_;
};

} // namespace velmora
