#pragma once

#include <VelmoraCore/QueryItem.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// Texts that were seen, told apart in time that nobody's choice of texts can spoil.
class SeenTexts {
public:
    // Takes in what `write` appends to the text handed to it, and says whether that was new.
    template<typename Write>
    bool add(Write write)
    {
        const std::size_t begin = texts_.size();
        write(texts_);
        return keep(begin);
    }

private:
    struct Entry {
        std::uint64_t hash;
        std::size_t begin;
        std::size_t length; // Plus one; 0 for an empty place.
    };

    bool keep(std::size_t begin);
    Entry &placeOf(std::uint64_t hash, std::string_view text);
    void grow();

    std::string texts_; // All of them, one behind the other.
    std::vector<Entry> entries_ = std::vector<Entry>(64);
    std::size_t count_ = 0;
};

// The parameters of a link that stay: of equal ones the first.
//
// Two are equal when their names are, in lower case, and their values, absent and empty ones alike. What
// cannot be decoded is compared as written, so that different unreadable values are not taken for one.
class KeptItems {
public:
    // Whether the item differs from all before it. It has to live as long as this object.
    bool isNew(const QueryItem &item);

private:
    // So many plain items are compared one by one, which takes no memory.
    static constexpr std::size_t few = 8;

    bool isNewAmongFew(const QueryItem &item) const;
    bool isNewAmongMany(const QueryItem &item);

    std::array<QueryItem, few> few_;
    std::size_t count_ = 0;
    std::optional<SeenTexts> seen_; // Once there are many.
};

} // namespace velmora
