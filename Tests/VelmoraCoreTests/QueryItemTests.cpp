#include <VelmoraCore/Query/QueryItemReader.h>
#include <VelmoraCore/QueryItem.h>

#include <gtest/gtest.h>

#include <vector>

namespace velmora {
namespace {

using namespace std::string_view_literals;

std::vector<QueryItem> itemsOf(std::string_view query)
{
    std::vector<QueryItem> items;
    QueryItemReader reader(query);
    for (QueryItem item; reader.next(item);)
        items.push_back(item);
    return items;
}

std::string written(std::string_view text)
{
    std::string query;
    appendQueryText(query, text);
    return query;
}

TEST(QueryItemReader, SplitsAtAmpersandsAndFirstEqualsSigns)
{
    EXPECT_EQ(itemsOf("a=1&b=2=3;c&d&e="),
              (std::vector<QueryItem>{{"a", "1"}, {"b", "2=3;c"}, {"d", std::nullopt}, {"e", ""}}));
}

TEST(QueryItemReader, GivesEmptyItemsForEmptyPieces)
{
    EXPECT_TRUE(itemsOf("").empty());
    EXPECT_EQ(itemsOf("&"), (std::vector<QueryItem>{{"", std::nullopt}, {"", std::nullopt}}));
    EXPECT_EQ(
        itemsOf("a&&=v&"),
        (std::vector<QueryItem>{{"a", std::nullopt}, {"", std::nullopt}, {"", "v"}, {"", std::nullopt}}));
}

// Items of all lengths, at all places: the reader looks at pieces of the query.
TEST(QueryItemReader, SplitsLongQueriesAsItSplitsShortOnes)
{
    std::string query;
    std::vector<QueryItem> expected;
    std::vector<std::string> names;
    for (std::size_t length = 0; length < 150; ++length)
        names.push_back(std::string(length, 'n') + (length % 7 == 0 ? "%" : ""));
    for (const std::string &name : names) {
        query.append(name).append("=").append(name).append("&").append(name).append("&&");
        expected.insert(expected.end(), {{name, name}, {name, std::nullopt}, {"", std::nullopt}});
    }
    expected.push_back({"", std::nullopt});
    const std::vector<QueryItem> items = itemsOf(query);
    EXPECT_EQ(items, expected);
    for (const QueryItem &item : items)
        EXPECT_EQ(item.plain, !item.name.ends_with('%')) << item.name;
}

TEST(PercentDecoded, DecodesEscapesAndLeavesTheRest)
{
    EXPECT_EQ(percentDecoded("a%20b+c"), "a b+c");
    EXPECT_EQ(percentDecoded("%C3%a4\u00E4"), "\u00E4\u00E4");
    EXPECT_EQ(percentDecoded("%zz%4%"), "%zz%4%");
    EXPECT_EQ(percentDecoded("%00"), std::string("\0", 1));
    EXPECT_EQ(percentDecoded(""), "");
    EXPECT_EQ(percentDecoded("%2541"), "%41");
}

TEST(PercentDecoded, GivesNothingForWhatIsNotUtf8)
{
    for (const std::string_view text : {"%FF"sv, "a%C3"sv, "%ED%A0%80"sv, "\xFF"sv})
        EXPECT_EQ(percentDecoded(text), std::nullopt);
}

TEST(AppendQueryText, WritesWhatMayStandThereAsItself)
{
    constexpr std::string_view allowed = "ABCXYZabcxyz0189-._~!$'()*+,;:@/?";
    EXPECT_EQ(written(allowed), allowed);
    for (int byte = 0; byte < 128; ++byte) {
        const char c = static_cast<char>(byte);
        const std::string result = written(std::string_view(&c, 1));
        if (allowed.find(c) != std::string_view::npos || std::isalnum(byte) != 0 || c == '%')
            EXPECT_EQ(result, std::string(1, c));
        else
            EXPECT_EQ(result.size(), 3U) << byte;
    }
}

TEST(AppendQueryText, EscapesTheRestInUpperCase)
{
    EXPECT_EQ(written("&=#[]{}|<>\"\\^` "), "%26%3D%23%5B%5D%7B%7D%7C%3C%3E%22%5C%5E%60%20");
    EXPECT_EQ(written("\x01\x7F\u00FC你🙂"), "%01%7F%C3%BC%E4%BD%A0%F0%9F%99%82");
    EXPECT_EQ(written("%5b%c3%bc%2f%2b"), "%5B%C3%BC/%2B");
}

TEST(AppendQueryText, LeavesPlaceholdersOfTemplatesAlone)
{
    for (const std::string_view text : {"{id}", "x-{{item.id}}-y", "${row[0].id}", "a${f(1)}b"})
        EXPECT_EQ(written(text), text);
    EXPECT_EQ(written("{}"), "%7B%7D");
    EXPECT_EQ(written("{1}"), "%7B1%7D");
    EXPECT_EQ(written("${a&b}"), "$%7Ba%26b%7D");
    EXPECT_EQ(written("${a#}"), "$%7Ba%23%7D");
    EXPECT_EQ(written("{a"), "%7Ba");
}

TEST(AppendQueryText, UndoesEscapesOnlyWhereThePlainCharacterMeansTheSameEverywhere)
{
    EXPECT_EQ(written("%41%7e%2d%2e%5f%2f%3a%40%3f%2c"), "A~-._/:@?,");
    EXPECT_EQ(written("%21%24%27%28%29%2a%3b"), "%21%24%27%28%29%2A%3B");
    EXPECT_EQ(written("a%20https%3a%2f%2fb"), "a%20https%3A//b");
    EXPECT_EQ(written("https%3a%2f%2fb"), "https://b");
}

TEST(AppendQueryText, WritesBackWhatItCannotRead)
{
    EXPECT_EQ(written("%zz%4%%%ff%c3%e2%82x"), "%zz%4%%%ff%c3%e2%82x");
    EXPECT_EQ(written("%%34%31%7e"), "%%341~");
    EXPECT_EQ(written("\xFF\xC3"), "\xFF\xC3");
    EXPECT_EQ(written("%c3\xBC"), "%C3%BC");
}

} // namespace
} // namespace velmora
