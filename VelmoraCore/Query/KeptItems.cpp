#include <VelmoraCore/Query/KeptItems.h>
#include <VelmoraCore/Rules/NameKey.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Unicode.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>
#include <utility>

namespace velmora {

namespace {

// Not to be guessed from outside, so that nobody can choose texts that fall on one place.
std::uint64_t seed()
{
    static const std::uint64_t value = [] {
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        return (static_cast<std::uint64_t>(now) ^ reinterpret_cast<std::uintptr_t>(&std::memcpy)) *
               0x9E3779B97F4A7C15U;
    }();
    return value;
}

std::uint64_t mixed(std::uint64_t hash, std::uint64_t word)
{
    hash = (hash ^ word) * 0xFF51AFD7ED558CCDU;
    return hash ^ hash >> 32;
}

std::string_view valueOf(const QueryItem &item)
{
    return item.value.value_or(std::string_view());
}

void appendReadable(std::string &key, std::string_view text)
{
    const std::optional<std::string> decoded =
        text.find('%') == std::string_view::npos ? std::nullopt : percentDecoded(text);
    key += decoded ? std::string_view(*decoded) : text;
}

void writePlainKey(std::string &key, const QueryItem &item)
{
    key = item.name;
    std::transform(key.begin(), key.end(), key.begin(), characters::lower);
    key.append(1, '=').append(valueOf(item));
}

// Into a string that is reused from item to item. What cannot be decoded is taken as written.
void writeKey(std::string &key, const QueryItem &item)
{
    if (item.plain)
        return writePlainKey(key, item);
    key.clear();
    appendReadable(key, item.name);
    key = lowercased(std::move(key)).append(1, '=');
    appendReadable(key, valueOf(item));
    key = canonicalForm(std::move(key));
}

} // namespace

std::uint32_t SeenPlaces::hashOf(std::string_view key)
{
    std::uint64_t hash = mixed(seed(), key.size());
    for (; key.size() >= sizeof(std::uint64_t); key.remove_prefix(sizeof(std::uint64_t)))
        hash = mixed(hash, NameKey::firstBytes(key));
    hash = mixed(hash, NameKey::firstBytes(key));
    return static_cast<std::uint32_t>(mixed(hash, seed()));
}

void SeenPlaces::grow()
{
    std::vector<Slot> slots(slots_.size() * 2);
    for (const Slot &seen : slots_) {
        if (seen.place == nowhere)
            continue;
        std::size_t slot = seen.hash & (slots.size() - 1);
        while (slots[slot].place != nowhere)
            slot = (slot + 1) & (slots.size() - 1);
        slots[slot] = seen;
    }
    slots_ = std::move(slots);
}

bool KeptItems::isNew(const QueryItem &item)
{
    // The first item needs no key: most links keep one.
    const bool arePlain = count_ == 0 || (item.plain && few_.front().plain);
    if (!seen_ && (count_ == few || !arePlain)) {
        seen_.emplace();
        for (std::size_t i = 0; i < count_; ++i)
            isNewAmongMany(few_[i]);
    }
    if (seen_)
        return isNewAmongMany(item);
    if (!isNewAmongFew(item))
        return false;
    few_[count_++] = item;
    return true;
}

bool KeptItems::isNewAmongFew(const QueryItem &item) const
{
    return std::none_of(few_.begin(), few_.begin() + static_cast<std::ptrdiff_t>(count_),
                        [&item](const QueryItem &other) { return isSamePlain(other, item); });
}

bool KeptItems::isNewAmongMany(const QueryItem &item)
{
    const auto place = static_cast<std::size_t>(item.name.data() - query_.data());
    if (place >= std::numeric_limits<std::uint32_t>::max())
        return true;
    writeKey(key_, item);
    return seen_->add(static_cast<std::uint32_t>(place), key_, [&](std::uint32_t other) {
        if (isWrittenAt(other, item))
            return true;
        writeKey(otherKey_, itemAt(query_, other));
        return otherKey_ == key_;
    });
}

// Whether the item that begins at this place of the query is written byte for byte like this one.
bool KeptItems::isWrittenAt(std::size_t place, const QueryItem &item) const
{
    const std::size_t length = item.value ? item.name.size() + 1 + item.value->size() : item.name.size();
    const std::string_view written(item.name.data(), length);
    const std::string_view there = query_.substr(place);
    return there.starts_with(written) && (there.size() == length || there[length] == '&');
}

} // namespace velmora
