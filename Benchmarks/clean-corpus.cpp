#include "Corpora.h"

#include <VelmoraCore/LinkCleaner.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace {

std::string corpus(std::string_view kind, std::size_t size)
{
    if (kind == "prose")
        return corpora::prose(size);
    return kind == "dense" ? corpora::denseLinks(size) : corpora::linkLines(size);
}

} // namespace

// usage: clean-corpus make|clean|append|print prose|links|dense COUNT
//
// Makes COUNT bytes of prose or COUNT lines of links, and cleans them, with or without a list of what was
// removed, or not: the difference of two runs is what cleaning costs. "print" writes the text.
int main(int count, char *arguments[])
{
    if (count != 4)
        return EXIT_FAILURE;
    const std::string_view work = arguments[1];
    const std::string_view kind = arguments[2];
    const auto size = static_cast<std::size_t>(std::strtoull(arguments[3], nullptr, 10));
    using Configuration = velmora::LinkCleanerConfiguration;
    const velmora::LinkCleaner cleaner(Configuration::withDefaultRules());
    const std::string text = corpus(kind, size);
    if (work == "print") {
        std::cout << text;
        return std::cout.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    if (work == "append") {
        std::string output;
        cleaner.appendCleaned(text, output);
        std::cout << text.size() << " bytes became " << output.size() << '\n';
        return EXIT_SUCCESS;
    }
    const std::size_t removed = work == "clean" ? cleaner.clean(text).removedItems.size() : 0;
    std::cout << text.size() << " bytes, " << removed << " parameters removed\n";
    return EXIT_SUCCESS;
}
