#include <VelmoraCore/Detection/LinkScanner.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
namespace {

constexpr std::string_view openMark = "⟦";
constexpr std::string_view closeMark = "⟧";

std::vector<std::string> linesOf(const std::string &file)
{
    std::vector<std::string> lines;
    std::ifstream stream(std::string(VELMORA_TEST_DATA) + '/' + file);
    EXPECT_TRUE(stream.is_open()) << file;
    for (std::string line; std::getline(stream, line);) {
        if (!line.starts_with('#') && line.find_first_not_of(' ') != std::string::npos)
            lines.push_back(line);
    }
    return lines;
}

std::string withoutMarks(std::string line)
{
    for (const std::string_view mark : {openMark, closeMark}) {
        for (std::size_t at = line.find(mark); at != std::string::npos; at = line.find(mark, at))
            line.erase(at, mark.size());
    }
    return line;
}

std::string withMarks(const std::string &text)
{
    std::string result;
    std::size_t copied = 0;
    LinkScanner scanner(text);
    for (FoundLink link; scanner.next(link); copied = link.end) {
        result.append(text, copied, link.begin - copied).append(openMark);
        result.append(text, link.begin, link.end - link.begin).append(closeMark);
    }
    return result.append(text, copied);
}

// Links with a user, which the standard leaves out and we take in.
bool isDecidedOtherwise(std::string_view line)
{
    return line.starts_with("http://john");
}

TEST(LinkDetectionConformance, FindsTheLinksOfEveryLineOfThePublishedTest)
{
    int web = 0;
    int passed = 0;
    for (const std::string &line : linesOf("UnicodeLinks.txt")) {
        if (isDecidedOtherwise(line))
            continue;
        EXPECT_EQ(withMarks(withoutMarks(line)), line);
        const bool isWeb = line.find('@') == std::string::npos;
        web += isWeb ? 1 : 0;
        passed += isWeb && withMarks(withoutMarks(line)) == line ? 1 : 0;
    }
    EXPECT_EQ(web, 316);
    RecordProperty("webLinesPassed", passed);
}

TEST(LinkDetectionConformance, FindsTheLinksOfEveryLineOfOurOwn)
{
    const std::vector<std::string> lines = linesOf("LinkDetectionOwn.txt");
    EXPECT_GT(lines.size(), 50U);
    for (const std::string &line : lines)
        EXPECT_EQ(withMarks(withoutMarks(line)), line);
}

} // namespace
} // namespace velmora
