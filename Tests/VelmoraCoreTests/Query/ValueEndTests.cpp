#include <VelmoraCore/Query/ValueEnd.h>

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace velmora {
namespace {

constexpr std::string_view link = "https://e.com/?utm_source=";

// What stands before the link, its last value, what stands behind it, and how much of the value is certain.
struct Row {
    std::string_view before;
    std::string_view value;
    std::string_view behind;
    std::string_view certain;
};

constexpr auto rows = std::to_array<Row>({
    // Words.
    {"see ", "a", " x", "a"},
    {"see ", "Spring_sale-2", " x", "Spring_sale-2"},
    {"see ", "", " x", ""},
    {"see ", "a.b", " x", "a.b"},
    {"see ", "0123456789012345678901234567890123456789012345678901234567890123456789", " x",
     "0123456789012345678901234567890123456789012345678901234567890123456789"},
    {"see ", "0123456789012345678901234567890123456789012345678901234567890123,456789", " x",
     "0123456789012345678901234567890123456789012345678901234567890123"},
    // Separators of columns and lists.
    {"see ", "a,b", " x", "a"},
    {"see ", "a|b", " x", "a"},
    {"see ", "a;b", " x", "a"},
    {"see ", "a;b=1", " x", "a;b=1"},
    {"=", "a;b=1", " x", "a"},
    // Ends of comments and sentences.
    {"/* ", "a*/x", " x", "a"},
    {"see ", "a*b", " x", "a*b"},
    {"see ", "a...b", " x", "a"},
    {"see ", "a..b", " x", "a..b"},
    {"see ", "a!!b", " x", "a"},
    {"see ", "a!?b", " x", "a"},
    {"see ", "a?!b", " x", "a"},
    {"see ", "a??b", " x", "a"},
    {"see ", "a?b!c", " x", "a?b!c"},
    // Brackets open behind a value, not at its beginning.
    {"see ", "a(b)", " x", "a"},
    {"see ", "(b)", " x", "(b)"},
    // Signs at the end, and marks that were opened before.
    {"see ", "a*", " x", "a"},
    {"see ", "a~^$@%", " x", "a"},
    {"see ", "a_", " x", "a_"},
    {"_see ", "a_", " x", "a"},
    {"_", "a_b", " x", "a"},
    {"see ", "a-", " x", "a-"},
    {"see ", "a-", "> x", "a"},
    {"<", "a-", "> x", "a-"},
    {"see ", "a.,b", " x", "a"},
    // Nothing around.
    {"", "a,b*", "", "a,b*"},
    {" ", "a,b*", "\n", "a,b*"},
});

std::string textOf(const Row &row)
{
    return std::string(row.before).append(link).append(row.value).append(row.behind);
}

std::string certain(const std::string &text, TextExtent extent, const Row &row)
{
    const std::size_t value = row.before.size() + link.size();
    const std::size_t end = certainValueEnd(text, extent, row.before.size(), value, value + row.value.size());
    return text.substr(value, end - value);
}

TEST(CertainValueEnd, LeavesToTheTextWhatMayBeItsOwn)
{
    for (const Row &row : rows) {
        const std::string text = textOf(row);
        SCOPED_TRACE(text);
        EXPECT_EQ(certain(text, TextExtent::whole, row), row.certain);
    }
}

TEST(CertainValueEnd, TakesNoLinkOfAPieceForTheWholeText)
{
    const Row row{"", "a,b", "\n", "a"};
    EXPECT_EQ(certain(textOf(row), TextExtent::whole, row), "a,b");
    EXPECT_EQ(certain(textOf(row), TextExtent::piece, row), "a");
}

} // namespace
} // namespace velmora
