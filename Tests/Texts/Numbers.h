#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// Numbers that look like chance and are the same on every machine, unlike the standard's distributions: a linear
// congruential generator with the constants of Knuth's MMIX.
class Numbers {
public:
    explicit Numbers(std::uint64_t seed)
        : state_(seed)
    {
    }

    // Less than `bound`.
    std::size_t below(std::size_t bound)
    {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::size_t>(state_ >> 33) % bound;
    }

    template<std::size_t count>
    std::string_view pick(const std::array<std::string_view, count> &texts)
    {
        return texts[below(count)];
    }

private:
    std::uint64_t state_;
};
