#include "Delimiters.h"
#include "Expect.h"

#include <VelmoraCore/LinkCleaner.h>

#include <cstdint>
#include <string>
#include <string_view>

// Text around a link: the first byte chooses what stands on both sides of it, the rest is cut into what
// stands before that and behind.

namespace {

const velmora::LinkCleaner &cleaner()
{
    using Configuration = velmora::LinkCleanerConfiguration;
    static const velmora::LinkCleaner instance(Configuration(
        {}, Configuration::defaultTrackedParameterNames(), Configuration::defaultTrackedParameterPrefixes(),
        Configuration::defaultValueSensitiveTrackedParameters()));
    return instance;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::string_view text(reinterpret_cast<const char *>(data) + 2, size - 2);
    const Delimiters &pair = delimiterPairs()[data[0] % delimiterPairs().size()];
    const std::size_t cut = data[1] % 16 < text.size() ? data[1] % 16 : text.size();
    // A link of its own before this one may be cleaned, and takes up what follows it.
    if (text.substr(0, cut).find_first_of("?@:.&") != std::string_view::npos)
        return 0;
    if (pair.before == "^" && cut > 0)
        return 0; // "a^b" is no pair of marks.
    const std::string before = std::string(text.substr(0, cut)).append(pair.before);
    // What follows without anything between may be a part of the link; a further parameter may be cleaned.
    const std::string_view tail = text.substr(cut);
    if (tail.find('?') != std::string_view::npos)
        return 0;
    // Punctuation and "_" stand in queries too, and belong to them when another parameter follows.
    if ((pair.before.empty() || pair.before.front() == '_') &&
        tail.find_first_of("&=%_") != std::string_view::npos)
        return 0;
    const std::string behind = std::string(pair.behind).append(tail);
    // As a piece of a stream: a link that is the whole of a copied text has nothing around it.
    std::string cleaned;
    cleaner().appendCleaned(std::string(before).append("https://a.com/p?id=5&utm_source=x").append(behind),
                            cleaned);
    expect(cleaned.starts_with(before), "what stands before a link stays");
    expect(cleaned.ends_with(behind), "what stands behind a link stays");
    std::string again;
    expect(!cleaner().appendCleaned(cleaned, again), "cleaning a cleaned text changes nothing more");
    return 0;
}
