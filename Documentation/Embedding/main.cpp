#include <VelmoraCore/LinkCleaner.h>

#include <iostream>

int main()
{
    using Configuration = velmora::LinkCleanerConfiguration;
    const velmora::LinkCleaner cleaner(Configuration::withDefaultRules({"intranet.example"}));
    std::cout << cleaner.clean("see https://example.com/?id=7&utm_source=mail").cleanedText << '\n';
}
