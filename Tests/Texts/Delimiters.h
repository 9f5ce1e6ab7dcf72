#pragma once

#include <span>
#include <string_view>

// What stands around a link on both sides: the same, or an opening and a closing one.
struct Delimiters {
    std::string_view before;
    std::string_view behind;
};

// Those of many kinds of files and languages.
std::span<const Delimiters> delimiterPairs();
