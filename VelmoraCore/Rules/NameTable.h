#pragma once

#include <VelmoraCore/Rules/NameKey.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// Names, and prefixes of names, with a small number each, prepared for look-ups that mostly fail: one load
// and one test decide nearly all of those. The case of ASCII letters does not count.
class NameTable {
public:
    // Gives `name`, which has no capitals, the bits of `roles`, beside those it has.
    void add(std::string_view name, unsigned roles);

    // The same for every name that begins with `prefix`, as `beginsWith` has it.
    void addPrefix(std::string_view prefix, unsigned roles);

    // 0 for a name that is not known.
    unsigned rolesOf(std::string_view name) const
    {
        const std::size_t first =
            name.empty() ? 0 : static_cast<unsigned char>(characters::lower(name.front()));
        return (lengths_[first] & lengthBit(name.size())) == 0 ? rolesOfAll_ : find(name);
    }

    // Whether a name that begins outside ASCII, or the empty one, may be known.
    bool mayBeginOutsideAscii() const { return mayBeginOutsideAscii_; }

private:
    struct Entry {
        NameKey key;
        std::string name;
        unsigned roles; // Those of its prefixes too.
    };

    struct Prefix {
        bool begins(std::string_view name) const;

        NameKey::Word letters;
        NameKey::Word mask; // All bits of the bytes that count.
        std::string text;
        unsigned roles;
    };

    static std::uint64_t lengthBit(std::size_t length)
    {
        return std::uint64_t{1} << (length < 63 ? length : 63);
    }

    void noteBeginning(std::string_view text);
    unsigned find(std::string_view name) const;
    unsigned rolesOfPrefixes(std::string_view name, const NameKey &key) const;
    std::size_t slotOf(std::string_view name, const NameKey &key) const;
    void rebuild();

    // For each first byte the lengths of names that may be known, as bits; longer ones share the last bit.
    std::array<std::uint64_t, 256> lengths_{};
    unsigned rolesOfAll_ = 0; // By the empty prefix.
    bool mayBeginOutsideAscii_ = false;

    std::vector<Entry> entries_;
    // Places in `entries_` plus one, found by hash and stepping on; 0 is an empty slot. At most a quarter is
    // full.
    std::vector<std::uint32_t> slots_ = std::vector<std::uint32_t>(4);
    unsigned hashShift_ = 62; // Leaves as many bits of a hash as count the slots.

    std::vector<Prefix> prefixes_; // By their first bytes.
    // For each first byte where its prefixes begin; the next entry is where they end.
    std::array<std::uint32_t, 257> prefixBegins_{};
};

// Whether the text begins with a prefix that has no capitals. Characters are compared as the reader sees
// them, so "e" does not begin "é" in any spelling; the case of ASCII letters does not count.
bool beginsWith(std::string_view text, std::string_view prefix);

} // namespace velmora
