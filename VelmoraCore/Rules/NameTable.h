#pragma once

#include <VelmoraCore/Text/CharacterClasses.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// Names with a small number each, prepared for look-ups that mostly fail: one load and one test decide nearly
// all of them. The case of ASCII letters does not count.
class NameTable {
public:
    // Gives `name`, which has no capitals, the bits of `roles`, beside those it has.
    void add(std::string_view name, unsigned roles);

    // 0 for a name that was never added.
    unsigned rolesOf(std::string_view name) const
    {
        const std::size_t first =
            name.empty() ? 0 : static_cast<unsigned char>(characters::lower(name.front()));
        return (lengths_[first] & lengthBit(name)) == 0 ? 0 : find(name);
    }

private:
    struct Entry {
        std::string name;
        unsigned roles;
    };

    static std::uint64_t lengthBit(std::string_view name)
    {
        return std::uint64_t{1} << (name.size() < 63 ? name.size() : 63);
    }

    static std::size_t hash(std::string_view name);
    unsigned find(std::string_view name) const;
    std::size_t slotOf(std::string_view name) const;
    void rebuild();

    // For each first byte the lengths that occur, as bits; longer ones share the last bit.
    std::array<std::uint64_t, 256> lengths_{};
    std::vector<Entry> entries_;
    // Places in `entries_` plus one, found by hash and stepping on; 0 is an empty slot. At most a quarter is
    // full.
    std::vector<std::uint32_t> slots_ = std::vector<std::uint32_t>(4);
};

// Whether the text begins with a prefix that has no capitals. Characters are compared as the reader sees
// them, so "e" does not begin "é" in any spelling; the case of ASCII letters does not count.
bool beginsWith(std::string_view text, std::string_view prefix);

// Prefixes without capitals, looked up by what a text begins with. The case of ASCII letters does not count.
class PrefixTable {
public:
    PrefixTable() = default;
    explicit PrefixTable(std::vector<std::string> prefixes);

    // Whether the text begins with one of the prefixes.
    bool matches(std::string_view text) const
    {
        if (text.empty() || matchesAll_)
            return matchesAll_;
        const std::size_t first = static_cast<unsigned char>(characters::lower(text.front()));
        return begins_[first] != begins_[first + 1] && matchesOne(text);
    }

private:
    bool matchesOne(std::string_view text) const;

    std::vector<std::string> prefixes_; // Sorted.
    // For each first byte where its prefixes begin; the next entry is where they end.
    std::array<std::uint32_t, 257> begins_{};
    bool matchesAll_ = false;
};

} // namespace velmora
