#include <VelmoraCore/Text/ByteSearch.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace velmora {
namespace {

constexpr std::size_t longest = 90;

template<Mark kind>
std::vector<std::size_t> placesOfMarks(std::string_view text, std::size_t begin)
{
    std::vector<std::size_t> places;
    Marks<kind> marks(text, begin);
    for (std::size_t place = marks.next(); place < text.size(); place = marks.next())
        places.push_back(place);
    return places;
}

using MarksOfText = unsigned (*)(std::string_view, std::size_t);

std::vector<std::size_t> placesOfMarksByteByByte(std::string_view text, std::size_t begin, MarksOfText marks)
{
    std::vector<std::size_t> places;
    for (std::size_t at = begin; at < text.size(); ++at) {
        if (marks(text.substr(at), 0) & 1U)
            places.push_back(at);
    }
    return places;
}

void expectAlike(const std::string &text)
{
    for (std::size_t at = 0; at <= text.size(); ++at) {
        EXPECT_EQ(findQueryMark(text, at), portable::findQueryMark(text, at));
        EXPECT_EQ(findBlank(text, at), portable::findBlank(text, at));
        EXPECT_EQ(findLinkDelimiter(text, at), portable::findLinkDelimiter(text, at));
        EXPECT_EQ(findCoded(text, at), portable::findCoded(text, at));
        EXPECT_EQ(wordMarks(text, at), portable::wordMarks(text, at));
        EXPECT_EQ(placesOfMarks<Mark::link>(text, at),
                  placesOfMarksByteByByte(text, at, portable::linkMarks));
        EXPECT_EQ(placesOfMarks<Mark::separator>(text, at),
                  placesOfMarksByteByByte(text, at, portable::separatorMarks));
        EXPECT_EQ(behindLastBlank(text, 0, at), portable::behindLastBlank(text, 0, at));
        EXPECT_EQ(behindLastBlank(text, at / 3, at), portable::behindLastBlank(text, at / 3, at));
    }
}

TEST(ByteSearch, GivesTheSameOnThisMachineAsOnEveryOther)
{
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t place = 0; place < longest; place += 7) {
            std::string text(longest, 'x');
            text[place] = static_cast<char>(byte);
            expectAlike(text);
            text[longest - 1 - place] = ' ';
            expectAlike(text);
        }
    }
}

TEST(ByteSearch, FindsQuestionMarksThatSomethingFollows)
{
    for (std::size_t size = 1; size < 200; ++size) {
        std::string text(size, 'x');
        EXPECT_EQ(findQueryMark(text, 0), size);
        for (const char next : {' ', 'y', '?'}) {
            for (std::size_t mark = size > 70 ? size - 70 : 0; mark < size; ++mark) {
                text.assign(size, 'x');
                text[mark] = '?';
                if (mark + 1 < size)
                    text[mark + 1] = next;
                EXPECT_EQ(findQueryMark(text, 0), portable::findQueryMark(text, 0));
                EXPECT_EQ(findQueryMark(text, mark / 2), portable::findQueryMark(text, mark / 2));
                EXPECT_EQ(findQueryMark(text, mark), portable::findQueryMark(text, mark));
            }
        }
    }
}

TEST(ByteSearch, FindsNothingInAnEmptyText)
{
    EXPECT_EQ(findQueryMark("", 0), 0U);
    EXPECT_EQ(findBlank("", 0), 0U);
    EXPECT_EQ(behindLastBlank("", 0, 0), 0U);
    EXPECT_EQ(findLinkDelimiter("", 0), 0U);
}

TEST(ByteSearch, StopsAtWhatEndsALink)
{
    std::string text(81, 'a');
    for (const char c : std::string(" \t\n\r\0<>\x7F", 8)) {
        text[40] = c;
        EXPECT_EQ(findBlank(text, 0), 40U);
        EXPECT_EQ(behindLastBlank(text, 0, text.size()), 41U);
    }
    for (const char c : std::string("\"()[]{}\xC3")) {
        text[40] = c;
        EXPECT_EQ(findBlank(text, 0), text.size());
        EXPECT_EQ(findLinkDelimiter(text, 0), 40U);
    }
    EXPECT_EQ(findBlank("aaaaaaaaaaaaaaaa?#&=", 0), 20U);
}

} // namespace
} // namespace velmora
