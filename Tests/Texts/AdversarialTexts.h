#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

// Families of texts that are as expensive as possible for a link detector.
struct AdversarialFamily {
    std::string_view name;
    std::string_view head; // Once at the beginning.
    std::string_view unit; // As often as it fits; a "\1" in it stands for a running number.
    std::string_view tail; // Once at the end.

    // A text of about `size` bytes.
    std::string text(std::size_t size) const;
};

std::span<const AdversarialFamily> adversarialFamilies();
