#pragma once

#include <string>
#include <string_view>

// The text as a terminal can show it without harm, and in one line: controls, bytes that are not UTF-8 and
// characters that turn the direction of what follows are written as escapes, "\x1b" or "\u202e".
std::string printable(std::string_view text);
