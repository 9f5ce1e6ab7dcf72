#pragma once

#include <cstddef>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What the command line asks for.
struct Options {
    enum class Mode { text, inPlace, jsonLines, detection, help, version };

    Mode mode = Mode::text;
    bool report = false;
    std::size_t jobs = 0; // Threads at most; 0 for as many as there are processors.
    std::set<std::string> ignoredHosts;
    std::vector<std::string> files; // "-" is standard input.
    std::string problem;            // Why the command line cannot be understood; empty if it can.

    static Options parse(std::span<const char *const> arguments);
    static std::string_view helpText();
    static std::string_view versionText();
};
