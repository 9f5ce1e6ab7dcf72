#include <VelmoraCore/Rules/NameTable.h>
#include <VelmoraCore/Unicode.h>

#include <algorithm>
#include <utility>

namespace velmora {

void NameTable::add(std::string_view name, unsigned roles)
{
    const std::size_t slot = slotOf(name);
    if (slots_[slot] != 0) {
        entries_[slots_[slot] - 1].roles |= roles;
        return;
    }
    lengths_[name.empty() ? 0 : static_cast<unsigned char>(name.front())] |= lengthBit(name);
    entries_.push_back({std::string(name), roles});
    slots_[slot] = static_cast<std::uint32_t>(entries_.size());
    if (entries_.size() * 4 > slots_.size())
        rebuild();
}

unsigned NameTable::find(std::string_view name) const
{
    const std::uint32_t place = slots_[slotOf(name)];
    return place == 0 ? 0 : entries_[place - 1].roles;
}

// The slot that holds the name, or the empty one where it would stand.
std::size_t NameTable::slotOf(std::string_view name) const
{
    std::size_t slot = hash(name) & (slots_.size() - 1);
    while (slots_[slot] != 0 && !characters::equalsIgnoringCase(name, entries_[slots_[slot] - 1].name))
        slot = (slot + 1) & (slots_.size() - 1);
    return slot;
}

void NameTable::rebuild()
{
    slots_.assign(slots_.size() * 2, 0);
    for (std::uint32_t place = 0; place < entries_.size(); ++place)
        slots_[slotOf(entries_[place].name)] = place + 1;
}

// Of a few characters only: what they leave alike is told apart by comparing.
std::size_t NameTable::hash(std::string_view name)
{
    if (name.empty())
        return 0;
    const auto byte = [name](std::size_t at) -> std::size_t {
        return static_cast<unsigned char>(characters::lower(name[at]));
    };
    const std::size_t last = name.size() - 1;
    return (byte(0) + byte(last / 2) * 31 + byte(last) * 131 + name.size() * 17) * 0x9E3779B1U >> 7;
}

bool beginsWith(std::string_view text, std::string_view prefix)
{
    return characters::startsIgnoringCase(text, prefix) && isCharacterBoundary(text, prefix.size());
}

PrefixTable::PrefixTable(std::vector<std::string> prefixes)
    : prefixes_(std::move(prefixes))
{
    std::sort(prefixes_.begin(), prefixes_.end());
    if (!prefixes_.empty() && prefixes_.front().empty()) {
        matchesAll_ = true;
        prefixes_.clear();
    }
    for (const std::string &prefix : prefixes_)
        ++begins_[static_cast<unsigned char>(prefix.front()) + 1U];
    for (std::size_t byte = 1; byte < begins_.size(); ++byte)
        begins_[byte] += begins_[byte - 1];
}

bool PrefixTable::matchesOne(std::string_view text) const
{
    const std::size_t first = static_cast<unsigned char>(characters::lower(text.front()));
    return std::any_of(prefixes_.begin() + begins_[first], prefixes_.begin() + begins_[first + 1],
                       [text](const std::string &prefix) { return beginsWith(text, prefix); });
}

} // namespace velmora
