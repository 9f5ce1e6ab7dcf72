#pragma once

#include <string>
#include <vector>

namespace velmora {

struct MarkedText {
    std::string text;
    std::string cleaned;
};

// Texts that behave as the sentence says.
struct MarkedTexts {
    std::string sentence;
    std::vector<MarkedText> texts;
};

// The blocks of a file of test data; its head explains the marks.
std::vector<MarkedTexts> markedTexts(const std::string &file);

} // namespace velmora
