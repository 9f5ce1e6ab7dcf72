#include "MarkedTexts.h"

#include <fstream>
#include <string_view>

namespace velmora {

namespace {

constexpr std::string_view removedBegin = "⟦";
constexpr std::string_view removedEnd = "⟧";
constexpr std::string_view addedBegin = "⟪";
constexpr std::string_view addedEnd = "⟫";

void replaceAll(std::string &text, std::string_view from, std::string_view to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

std::string utf8Of(unsigned long point)
{
    std::string text;
    if (point < 0x80)
        return {static_cast<char>(point)};
    if (point < 0x800) {
        text += static_cast<char>(0xC0 | point >> 6);
    } else {
        text += static_cast<char>(0xE0 | point >> 12);
        text += static_cast<char>(0x80 | (point >> 6 & 0x3F));
    }
    text += static_cast<char>(0x80 | (point & 0x3F));
    return text;
}

std::string withCharacters(std::string text)
{
    constexpr std::string_view begin = "⟨";
    constexpr std::string_view end = "⟩";
    replaceAll(text, "⏎", "\n");
    replaceAll(text, "⇥", "\t");
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at)) {
        const std::size_t close = text.find(end, at);
        const std::string number = text.substr(at + begin.size(), close - at - begin.size());
        text.replace(at, close + end.size() - at, utf8Of(std::stoul(number, nullptr, 16)));
    }
    return text;
}

// Without what stands between two marks, and without two others.
std::string version(std::string text, std::string_view outBegin, std::string_view outEnd,
                    std::string_view inBegin, std::string_view inEnd)
{
    for (std::size_t at = text.find(outBegin); at != std::string::npos; at = text.find(outBegin))
        text.erase(at, text.find(outEnd, at) + outEnd.size() - at);
    replaceAll(text, inBegin, "");
    replaceAll(text, inEnd, "");
    return withCharacters(text);
}

} // namespace

std::vector<MarkedTexts> markedTexts(const std::string &file)
{
    std::vector<MarkedTexts> blocks;
    std::ifstream stream(std::string(VELMORA_TEST_DATA) + '/' + file);
    bool isHead = true;
    bool begins = true;
    for (std::string line; std::getline(stream, line);) {
        if (line.empty()) {
            begins = true;
            isHead = false;
        } else if (!isHead && begins) {
            blocks.push_back({line, {}});
            begins = false;
        } else if (!isHead) {
            blocks.back().texts.push_back({version(line, addedBegin, addedEnd, removedBegin, removedEnd),
                                           version(line, removedBegin, removedEnd, addedBegin, addedEnd)});
        }
    }
    return blocks;
}

} // namespace velmora
