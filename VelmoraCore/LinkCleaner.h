#pragma once

#include <VelmoraCore/CleaningVisitor.h>
#include <VelmoraCore/LinkCleanerConfiguration.h>
#include <VelmoraCore/LinkCleaningResult.h>
#include <VelmoraCore/RemovedQueryItem.h>
#include <VelmoraCore/TextExtent.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

class TrackingRules;
struct FoundLink;

// The result of cleaning one URL: the URL itself when nothing was removed.
struct CleanedUrl {
    std::string url;
    std::vector<RemovedQueryItem> removedItems;

    bool operator==(const CleanedUrl &) const = default;
};

// One link of a text and its replacement.
struct LinkEdit {
    std::size_t offset; // In bytes.
    std::size_t length;
    std::string replacement;
    std::vector<RemovedQueryItem> removedItems; // At least one.

    bool operator==(const LinkEdit &) const = default;
};

// Removes tracking parameters from web links.
//
// Texts are UTF-8; other bytes stay unchanged. Immutable after construction; any thread may call any member.
// No call fails: a link that cannot be parsed stays unchanged.
class LinkCleaner {
public:
    explicit LinkCleaner(LinkCleanerConfiguration configuration);

    const LinkCleanerConfiguration &configuration() const { return configuration_; }

    // Cleans every web link in `text`. What stands around and between the links is kept byte for byte, and so
    // is every link that holds no tracking parameter.
    //
    // In a cleaned link everything but the query stays as written. Its kept parameters keep their order;
    // repeated ones are dropped, and escapes that mean nothing to servers nor around links are written as plain
    // characters. A link that was written without its scheme gets "http://". What does not belong to a link for
    // certain stays, and cleaning a cleaned text changes nothing.
    [[nodiscard]] LinkCleaningResult clean(std::string_view text) const;

    // Appends the text as `clean` makes it to `output`, which is no part of it, and says whether anything was
    // removed. For streams, whose texts are pieces, and for large texts: nothing is allocated but what `output`
    // lacks, and what was removed is kept nowhere but shown to the visitor, if there is one.
    bool appendCleaned(std::string_view text, std::string &output, CleaningVisitor *visitor = nullptr,
                       TextExtent extent = TextExtent::piece) const;

    // The changes that `clean` makes, in the order of the text. Costs no memory when there are none.
    [[nodiscard]] std::vector<LinkEdit> edits(std::string_view text) const;

    // Cleans a text that is one URL, scheme included. Other schemes than http and https are left alone.
    [[nodiscard]] CleanedUrl cleanUrl(std::string_view url) const;

private:
    LinkCleanerConfiguration configuration_;
    std::shared_ptr<const TrackingRules> rules_; // Shared by copies, which have the same configuration.
};

} // namespace velmora
