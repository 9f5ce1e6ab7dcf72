#pragma once

#include <VelmoraCore/CleaningVisitor.h>
#include <VelmoraCore/Query/ValueEnd.h>
#include <VelmoraCore/Rules/TrackingRules.h>
#include <VelmoraCore/Text/ByteSearch.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

// The link that most links are: a whole word, "http://" or "https://", a host, path and query without anything
// that needs decoding, pairing, or a look at what stands around it.
//
// Reads such a link in one pass and cleans it by copying. Everything else is for `LinkScanner` and `LinkQuery`,
// which give the same for these links.
class PlainLink {
public:
    // Clearing the items would cost more than reading a usual query.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
    PlainLink(std::string_view text, TextExtent extent)
        : text_(text)
        , extent_(extent)
    {
    }

    // Reads the word that begins at `word`, at the beginning of the text or behind what ends every link, whose
    // first "?" is at `queryMark`. False if it is no such link.
    bool read(std::size_t word, std::size_t queryMark);

    std::size_t begin() const { return begin_; }

    std::size_t end() const { return end_; }

    // Whether anything of the link that was read is to be removed.
    bool isTracked(const TrackingRules &rules);

    // For a tracked link: appends the text from `from`, which is not behind the link, to the link's end as it is
    // to be, and shows the removed parameters to the visitor, if there is one.
    void rewrite(std::size_t from, std::string &output, CleaningVisitor *visitor) const;

private:
    // Places in the text. Without "=" the name ends where the item ends.
    struct Item {
        std::size_t begin;
        std::size_t nameEnd;
        std::size_t end;
        bool isRemoved;
    };

    static constexpr std::size_t most = 16;

    bool readHost();
    bool readPath(LinkMarks &marks);
    bool readQuery(LinkMarks &marks);
    bool addItem(std::size_t begin, std::size_t nameEnd, std::size_t end);
    bool endsForCertain() const;
    bool isRepetition(const Item &item) const;

    QueryItem queryItem(const Item &item) const;

    std::string_view between(std::size_t begin, std::size_t end) const
    {
        return {text_.data() + begin, end - begin};
    }

    std::string_view text_;
    TextExtent extent_;
    std::size_t begin_ = 0;
    std::size_t hostBegin_ = 0;
    std::size_t hostEnd_ = 0;
    std::size_t queryMark_ = 0;
    std::size_t end_ = 0;
    std::size_t count_ = 0;
    std::array<Item, most> items_; // Only the first `count_` have a value.
};

} // namespace velmora
