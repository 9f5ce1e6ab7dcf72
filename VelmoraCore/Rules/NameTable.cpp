#include <VelmoraCore/Rules/NameTable.h>
#include <VelmoraCore/Unicode.h>

#include <algorithm>
#include <utility>

namespace velmora {

void NameTable::add(std::string_view name, unsigned roles)
{
    noteBeginning(name);
    const NameKey key(name);
    const std::size_t slot = slotOf(name, key);
    if (slots_[slot] != 0) {
        entries_[slots_[slot] - 1].roles |= roles;
        return;
    }
    lengths_[name.empty() ? 0 : static_cast<unsigned char>(name.front())] |= lengthBit(name.size());
    entries_.push_back({key, std::string(name), roles | rolesOfPrefixes(name, key)});
    slots_[slot] = static_cast<std::uint32_t>(entries_.size());
    if (entries_.size() * 4 > slots_.size())
        rebuild();
}

void NameTable::addPrefix(std::string_view prefix, unsigned roles)
{
    noteBeginning(prefix);
    if (prefix.empty()) {
        rolesOfAll_ |= roles;
        return;
    }
    const auto first = static_cast<unsigned char>(prefix.front());
    lengths_[first] |= ~(lengthBit(prefix.size()) - 1);
    const NameKey::Word all = ~NameKey::Word{0};
    const NameKey::Word mask = NameKey::firstBytes(std::string(std::min(prefix.size(), sizeof all), '\xFF'));
    prefixes_.insert(prefixes_.begin() + prefixBegins_[first + 1U],
                     {NameKey(prefix).first, mask, std::string(prefix), roles});
    for (std::size_t byte = first + 1U; byte < prefixBegins_.size(); ++byte)
        ++prefixBegins_[byte];
    for (Entry &entry : entries_) {
        if (beginsWith(entry.name, prefix))
            entry.roles |= roles;
    }
}

void NameTable::noteBeginning(std::string_view text)
{
    if (text.empty() || characters::is(text.front(), characters::nonAscii))
        mayBeginOutsideAscii_ = true;
}

unsigned NameTable::find(std::string_view name) const
{
    const NameKey key(name);
    const std::uint32_t place = slots_[slotOf(name, key)];
    return rolesOfAll_ | (place == 0 ? rolesOfPrefixes(name, key) : entries_[place - 1].roles);
}

unsigned NameTable::rolesOfPrefixes(std::string_view name, const NameKey &key) const
{
    const std::size_t first = name.empty() ? 0 : static_cast<unsigned char>(characters::lower(name.front()));
    unsigned roles = 0;
    for (std::size_t i = prefixBegins_[first]; i < prefixBegins_[first + 1]; ++i) {
        const Prefix &prefix = prefixes_[i];
        if ((key.first & prefix.mask) == prefix.letters && prefix.begins(name))
            roles |= prefix.roles;
    }
    return roles;
}

// The slot that holds the name, or the empty one where it would stand.
std::size_t NameTable::slotOf(std::string_view name, const NameKey &key) const
{
    const auto holds = [&](const Entry &entry) {
        return entry.key == key && entry.name.size() == name.size() &&
               (name.size() <= NameKey::decisiveLength || characters::equalsIgnoringCase(name, entry.name));
    };
    // Every byte has a part in the highest bits of a product.
    const std::uint64_t product = (key.first ^ std::rotl(key.last, 32) ^ name.size()) * 0x9E3779B97F4A7C15U;
    auto slot = static_cast<std::size_t>(product >> hashShift_);
    while (slots_[slot] != 0 && !holds(entries_[slots_[slot] - 1]))
        slot = (slot + 1) & (slots_.size() - 1);
    return slot;
}

void NameTable::rebuild()
{
    slots_.assign(slots_.size() * 2, 0);
    --hashShift_;
    for (std::uint32_t place = 0; place < entries_.size(); ++place)
        slots_[slotOf(entries_[place].name, entries_[place].key)] = place + 1;
}

// For a name whose first bytes are known to be equal.
bool NameTable::Prefix::begins(std::string_view name) const
{
    if (text.size() > sizeof letters)
        return beginsWith(name, text);
    return name.size() >= text.size() && isCharacterBoundary(name, text.size());
}

bool beginsWith(std::string_view text, std::string_view prefix)
{
    return characters::startsIgnoringCase(text, prefix) && isCharacterBoundary(text, prefix.size());
}

} // namespace velmora
