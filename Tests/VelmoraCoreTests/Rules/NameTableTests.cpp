#include <VelmoraCore/Rules/NameTable.h>

#include <gtest/gtest.h>

#include <string>

namespace velmora {
namespace {

TEST(NameTable, KnowsTheRolesOfItsNamesAndOfNoOthers)
{
    NameTable table;
    EXPECT_EQ(table.rolesOf("a"), 0U);
    EXPECT_EQ(table.rolesOf(""), 0U);
    table.add("a", 1);
    table.add("a", 4);
    table.add("", 2);
    EXPECT_EQ(table.rolesOf("a"), 5U);
    EXPECT_EQ(table.rolesOf(""), 2U);
    EXPECT_EQ(table.rolesOf("b"), 0U);
    EXPECT_EQ(table.rolesOf("aa"), 0U);
}

TEST(NameTable, TellsNamesApartThatLookAlikeToItsHash)
{
    NameTable table;
    for (char c = 'a'; c <= 'z'; ++c)
        table.add(std::string("x") + c + "yyyz", 1);
    for (char c = 'a'; c <= 'z'; ++c)
        EXPECT_EQ(table.rolesOf(std::string("x") + c + "yyyz"), 1U);
    EXPECT_EQ(table.rolesOf("x0yyyz"), 0U);
}

TEST(NameTable, HoldsManyAndLongNames)
{
    NameTable table;
    for (int i = 0; i < 2000; ++i)
        table.add(std::string(static_cast<std::size_t>(i % 100), 'n') + std::to_string(i), 1);
    for (int i = 0; i < 2000; ++i) {
        EXPECT_EQ(table.rolesOf(std::string(static_cast<std::size_t>(i % 100), 'n') + std::to_string(i)), 1U);
        EXPECT_EQ(
            table.rolesOf(std::string(static_cast<std::size_t>(i % 100), 'm') + std::to_string(i + 5000)),
            0U);
    }
}

TEST(NameTable, KnowsNamesInAnyCaseAndNoOtherCharacters)
{
    NameTable table;
    table.add("utm_az09", 1);
    table.add("a name of more than sixteen bytes", 2);
    table.add("[{@`", 4);
    EXPECT_EQ(table.rolesOf("UTM_Az09"), 1U);
    EXPECT_EQ(table.rolesOf("UTM_AZ0Y"), 0U);
    EXPECT_EQ(table.rolesOf("utm\x7F\x61z09"), 0U);
    EXPECT_EQ(table.rolesOf("A Name Of More Than Sixteen Bytes"), 2U);
    EXPECT_EQ(table.rolesOf("a name of mory than sixteen bytes"), 0U);
    EXPECT_EQ(table.rolesOf("[{@`"), 4U);
    EXPECT_EQ(table.rolesOf("{{@`"), 0U);
    EXPECT_EQ(table.rolesOf("[{``"), 0U);
    EXPECT_EQ(table.rolesOf("[[@`"), 0U);
}

TEST(NameTable, TellsNamesOfEveryLengthApart)
{
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    for (std::size_t length = 1; length <= letters.size(); ++length) {
        const std::string name = letters.substr(0, length);
        NameTable table;
        table.add(name, 1);
        EXPECT_EQ(table.rolesOf(name), 1U) << name;
        EXPECT_EQ(table.rolesOf(name + '\0'), 0U) << name;
        for (std::size_t at = 0; at < length; ++at) {
            std::string other = name;
            other[at] = '0';
            EXPECT_EQ(table.rolesOf(other), 0U) << other;
        }
    }
}

TEST(NameTable, KnowsWhatBeginsWithAPrefix)
{
    NameTable table;
    for (const std::string_view prefix : {"utm_", "us", "p.", "utm_", "a prefix of more than eight"})
        table.addPrefix(prefix, 1);
    table.addPrefix("utm_x", 2);
    table.add("utm_y", 4);
    EXPECT_EQ(table.rolesOf("utm_a"), 1U);
    EXPECT_EQ(table.rolesOf("UTM_"), 1U);
    EXPECT_EQ(table.rolesOf("utm_xyz"), 3U);
    EXPECT_EQ(table.rolesOf("utm_y"), 5U);
    EXPECT_EQ(table.rolesOf("user"), 1U);
    EXPECT_EQ(table.rolesOf("p.x"), 1U);
    EXPECT_EQ(table.rolesOf("a prefix of more than eight bytes"), 1U);
    EXPECT_EQ(table.rolesOf("a prefix of more thin eight bytes"), 0U);
    EXPECT_EQ(table.rolesOf("utm_" + std::string(100, 'a')), 1U);
    EXPECT_EQ(table.rolesOf("utm"), 0U);
    EXPECT_EQ(table.rolesOf("xutm_"), 0U);
    EXPECT_EQ(table.rolesOf("utm_\u0301"), 0U); // Not as the reader sees it.
    EXPECT_EQ(table.rolesOf("\xFFx"), 0U);
    EXPECT_EQ(table.rolesOf(""), 0U);
}

TEST(NameTable, KnowsEverythingByTheEmptyPrefix)
{
    NameTable table;
    table.addPrefix("", 1);
    table.add("x", 2);
    EXPECT_EQ(table.rolesOf(""), 1U);
    EXPECT_EQ(table.rolesOf("y"), 1U);
    EXPECT_EQ(table.rolesOf("x"), 3U);
}

} // namespace
} // namespace velmora
