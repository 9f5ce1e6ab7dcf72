#include "Corpora.h"

#include <VelmoraCore/LinkCleaner.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

// usage: clean-corpus make|clean prose|links COUNT
//
// Makes COUNT bytes of prose or COUNT lines of links, and cleans them or not: the difference of two runs is
// what cleaning costs.
int main(int count, char *arguments[])
{
    if (count != 4)
        return EXIT_FAILURE;
    const std::string_view work = arguments[1];
    const std::string_view kind = arguments[2];
    const auto size = static_cast<std::size_t>(std::strtoull(arguments[3], nullptr, 10));
    using Configuration = velmora::LinkCleanerConfiguration;
    const velmora::LinkCleaner cleaner(Configuration(
        {}, Configuration::defaultTrackedParameterNames(), Configuration::defaultTrackedParameterPrefixes(),
        Configuration::defaultValueSensitiveTrackedParameters()));
    const std::string text = kind == "prose" ? corpora::prose(size) : corpora::linkLines(size);
    const std::size_t removed = work == "clean" ? cleaner.clean(text).removedItems.size() : 0;
    std::cout << text.size() << " bytes, " << removed << " parameters removed\n";
    return EXIT_SUCCESS;
}
