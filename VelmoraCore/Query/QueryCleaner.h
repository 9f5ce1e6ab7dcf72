#pragma once

#include <VelmoraCore/CleaningVisitor.h>
#include <VelmoraCore/Query/QueryItemReader.h>
#include <VelmoraCore/Rules/TrackingRules.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

// Cleans the query of one link.
class QueryCleaner {
public:
    QueryCleaner(const TrackingRules &rules, std::string_view query, std::string_view host)
        : rules_(&rules)
        , host_(host)
        , query_(query)
        , rest_(query)
    {
    }

    // What stands around the query in its text.
    struct Place {
        bool endsLink = true; // No fragment follows.
        // Characters that end the link where they stand bare; zero for none.
        std::array<char, 2> endMarks{};
    };

    // Whether anything is to be removed. Allocates nothing when the parameters are plain ASCII.
    bool isTracked();

    // For a tracked query: appends the new query with its "?", or nothing if no parameter is left, and shows
    // the removed parameters to the visitor, if there is one.
    void rewrite(std::string &link, Place place, CleaningVisitor *visitor) const;

    struct Decision {
        QueryItem item;
        bool isRemoved = false;
    };

    // What becomes of the last item. Only to be asked after `isTracked`.
    Decision last() const;

private:
    // What was read and decided of the first items; those behind are read when the query is rewritten.
    static constexpr std::size_t remembered = 8;

    bool readFirstItems();

    const TrackingRules *rules_;
    LinkHost host_;
    std::string_view query_;
    QueryItemReader rest_;
    std::array<Decision, remembered> decisions_;
    std::size_t count_ = 0;
};

} // namespace velmora
