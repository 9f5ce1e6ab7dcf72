#pragma once

#include <cstddef>
#include <string>

// Everyday texts.
namespace corpora {

// About `size` bytes of sentences in lines, some of them questions.
std::string prose(std::size_t size);

// The same with a tracked link about every `distance` bytes.
std::string proseWithLinks(std::size_t size, std::size_t distance);

// `count` tracked links, each on a line of its own.
std::string linkLines(std::size_t count);

// The same with one to four trackers of twelve names in each.
std::string denseLinks(std::size_t count);

// One link with two trackers among its parameters.
std::string shortLink();

} // namespace corpora
