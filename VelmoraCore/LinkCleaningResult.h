#pragma once

#include <VelmoraCore/RemovedQueryItem.h>

#include <string>
#include <vector>

namespace velmora {

// The result of cleaning a text.
struct LinkCleaningResult {
    // The text exactly as given.
    std::string originalText;
    // The text with its cleaned links in place; equal to `originalText` when there was nothing to clean.
    std::string cleanedText;
    // Every removed parameter: links in the order of the text, parameters in their order within a link.
    std::vector<RemovedQueryItem> removedItems;

    // Looks at the texts only, not at `removedItems`.
    bool didChange() const { return cleanedText != originalText; }

    bool operator==(const LinkCleaningResult &) const = default;
};

} // namespace velmora
