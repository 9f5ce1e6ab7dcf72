#include "Corpora.h"

#include <VelmoraCore/LinkCleaner.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

// usage: clean-corpus none|prose|links COUNT
//
// Cleans COUNT bytes of prose or COUNT lines of links, or only makes them and cleans nothing ("none" makes
// links), so that the difference of two runs is what cleaning costs.
int main(int count, char *arguments[])
{
    if (count != 3)
        return EXIT_FAILURE;
    const std::string_view kind = arguments[1];
    const auto size = static_cast<std::size_t>(std::strtoull(arguments[2], nullptr, 10));
    using Configuration = velmora::LinkCleanerConfiguration;
    const velmora::LinkCleaner cleaner(Configuration(
        {}, Configuration::defaultTrackedParameterNames(), Configuration::defaultTrackedParameterPrefixes(),
        Configuration::defaultValueSensitiveTrackedParameters()));
    const std::string text = kind == "prose" ? corpora::prose(size) : corpora::linkLines(size);
    const std::size_t edits = kind == "none" ? 0 : cleaner.edits(text).size();
    std::cout << text.size() << " bytes, " << edits << " links cleaned\n";
    return EXIT_SUCCESS;
}
