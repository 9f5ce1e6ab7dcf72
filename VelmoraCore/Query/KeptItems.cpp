#include <VelmoraCore/Query/KeptItems.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Unicode.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iterator>
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

std::uint64_t hashOf(std::string_view text)
{
    std::uint64_t hash = mixed(seed(), text.size());
    while (!text.empty()) {
        std::uint64_t word = 0;
        const std::size_t length = std::min(text.size(), sizeof word);
        std::memcpy(&word, text.data(), length);
        hash = mixed(hash, word);
        text.remove_prefix(length);
    }
    return mixed(hash, seed());
}

std::string_view valueOf(const QueryItem &item)
{
    return item.value.value_or(std::string_view());
}

bool isSamePlain(const QueryItem &left, const QueryItem &right)
{
    const auto sameLetter = [](char a, char b) { return characters::lower(a) == characters::lower(b); };
    return valueOf(left) == valueOf(right) &&
           std::equal(left.name.begin(), left.name.end(), right.name.begin(), right.name.end(), sameLetter);
}

void appendKey(std::string &key, const QueryItem &item)
{
    if (item.plain) {
        std::transform(item.name.begin(), item.name.end(), std::back_inserter(key), characters::lower);
        key.append(1, '=').append(valueOf(item));
        return;
    }
    const auto readable = [](std::string_view text) {
        return percentDecoded(text).value_or(std::string(text));
    };
    key += canonicalForm(lowercased(readable(item.name)) + '=' + readable(valueOf(item)));
}

} // namespace

bool SeenTexts::keep(std::size_t begin)
{
    const std::string_view text = std::string_view(texts_).substr(begin);
    const std::uint64_t hash = hashOf(text);
    Entry &place = placeOf(hash, text);
    if (place.length != 0) {
        texts_.resize(begin);
        return false;
    }
    place = {hash, begin, text.size() + 1};
    if (++count_ * 2 > entries_.size())
        grow();
    return true;
}

SeenTexts::Entry &SeenTexts::placeOf(std::uint64_t hash, std::string_view text)
{
    const std::size_t mask = entries_.size() - 1;
    std::size_t place = hash & mask;
    while (entries_[place].length != 0 &&
           (entries_[place].hash != hash ||
            std::string_view(texts_).substr(entries_[place].begin, entries_[place].length - 1) != text))
        place = (place + 1) & mask;
    return entries_[place];
}

void SeenTexts::grow()
{
    std::vector<Entry> entries(entries_.size() * 2);
    for (const Entry &entry : entries_) {
        if (entry.length == 0)
            continue;
        std::size_t place = entry.hash & (entries.size() - 1);
        while (entries[place].length != 0)
            place = (place + 1) & (entries.size() - 1);
        entries[place] = entry;
    }
    entries_ = std::move(entries);
}

bool KeptItems::isNew(const QueryItem &item)
{
    if (!seen_ && (count_ == few || !item.plain)) {
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
    return seen_->add([&item](std::string &key) { appendKey(key, item); });
}

} // namespace velmora
