#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace velmora {

// The first and the last eight bytes of a name, its capitals made small, to be compared as two numbers. Two
// names of equal length up to sixteen bytes are equal when their keys are.
struct NameKey {
    using Word = std::uint64_t;

    explicit NameKey(std::string_view name)
        : first(lower(firstBytes(name)))
        , last(name.size() <= sizeof(Word) ? 0 : lower(wordAt(name.data() + name.size() - sizeof(Word))))
    {
    }

    bool operator==(const NameKey &) const = default;

    // Decides for all names of a length.
    static constexpr std::size_t decisiveLength = 2 * sizeof(Word);

    Word first; // Zeros behind a shorter name.
    Word last;  // Zero where the first bytes are all.

    // The first eight bytes, zeros behind a shorter text. What is shorter is put together of pieces that
    // overlap: copying a number of bytes that only the run knows takes a call.
    static Word firstBytes(std::string_view text)
    {
        if (text.size() >= sizeof(Word))
            return wordAt(text.data());
        if constexpr (std::endian::native == std::endian::little) {
            const auto byte = [text](std::size_t at) {
                return Word{static_cast<unsigned char>(text[at])} << (8 * at);
            };
            if (text.size() >= 4)
                return wordAt<std::uint32_t>(text.data()) |
                       Word{wordAt<std::uint32_t>(text.data() + text.size() - 4)} << (8 * (text.size() - 4));
            return text.empty() ? 0 : byte(0) | byte(text.size() / 2) | byte(text.size() - 1);
        } else {
            Word word = 0;
            std::memcpy(&word, text.data(), text.size());
            return word;
        }
    }

private:
    template<typename Number = Word>
    static Number wordAt(const char *bytes)
    {
        Number number;
        std::memcpy(&number, bytes, sizeof number);
        return number;
    }

    // Eight letters at once. The sums carry into the highest bit of each byte from "A" on and behind "Z".
    static Word lower(Word word)
    {
        constexpr Word all = 0x0101010101010101;
        constexpr Word highest = all * 0x80;
        const Word low = word & ~highest;
        const Word fromA = low + all * (0x80 - 'A');
        const Word behindZ = low + all * (0x7F - 'Z');
        const Word capitals = fromA & ~behindZ & ~word & highest;
        return word | capitals >> 2; // 0x20, what tells small letters from capitals.
    }
};

} // namespace velmora
