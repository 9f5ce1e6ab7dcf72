#pragma once

#include <VelmoraCore/QueryItem.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// Whether two plain items are the same parameter: their names are equal but for the case of letters, and their
// values, absent and empty ones alike.
inline bool isSamePlain(const QueryItem &left, const QueryItem &right)
{
    return characters::equalsInAnyCase(left.name, right.name) &&
           left.value.value_or(std::string_view()) == right.value.value_or(std::string_view());
}

// Pieces of a text that were seen, told apart by a key in time that nobody's choice of texts can spoil.
// Remembers where they stand, eight bytes for each, and no text.
class SeenPlaces {
public:
    // Whether no place seen before has this key. `hasKey` says whether a place that was seen does.
    template<typename HasKey>
    bool add(std::uint32_t place, std::string_view key, HasKey hasKey)
    {
        const std::uint32_t hash = hashOf(key);
        std::size_t slot = hash & (slots_.size() - 1);
        for (; slots_[slot].place != nowhere; slot = (slot + 1) & (slots_.size() - 1)) {
            if (slots_[slot].hash == hash && hasKey(slots_[slot].place))
                return false;
        }
        slots_[slot] = {hash, place};
        if (++count_ * 3 > slots_.size() * 2)
            grow();
        return true;
    }

private:
    static constexpr std::uint32_t nowhere = 0xFFFFFFFF;

    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t place = nowhere;
    };

    static std::uint32_t hashOf(std::string_view key);
    void grow();

    std::vector<Slot> slots_ = std::vector<Slot>(64);
    std::size_t count_ = 0;
};

// The parameters of a link that stay: of equal ones the first.
//
// Two are equal when their names are, in lower case, and their values, absent and empty ones alike. What
// cannot be decoded is compared as written, so that different unreadable values are not taken for one. What
// stands behind the first four gigabytes of a query is never taken for a repetition.
class KeptItems {
public:
    // The query has to live as long as this object.
    explicit KeptItems(std::string_view query)
        : query_(query)
    {
    }

    // Whether the item, one of the query's, differs from all before it.
    bool isNew(const QueryItem &item);

private:
    // So many plain items are compared one by one, which takes no memory. Only the first may be another.
    static constexpr std::size_t few = 8;

    bool isNewAmongFew(const QueryItem &item) const;
    bool isNewAmongMany(const QueryItem &item);
    bool isWrittenAt(std::size_t place, const QueryItem &item) const;

    std::string_view query_;
    std::array<QueryItem, few> few_;
    std::size_t count_ = 0;
    std::optional<SeenPlaces> seen_; // Once there are many.
    std::string key_;
    std::string otherKey_;
};

} // namespace velmora
