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

TEST(PrefixTable, MatchesWhatBeginsWithOneOfItsPrefixes)
{
    const PrefixTable table({"utm_", "us", "p.", "utm_"});
    EXPECT_TRUE(table.matches("utm_x"));
    EXPECT_TRUE(table.matches("utm_"));
    EXPECT_TRUE(table.matches("user"));
    EXPECT_TRUE(table.matches("p.x"));
    EXPECT_FALSE(table.matches("utm"));
    EXPECT_FALSE(table.matches("xutm_"));
    EXPECT_FALSE(table.matches("\xFFx"));
    EXPECT_FALSE(table.matches(""));
    EXPECT_FALSE(PrefixTable().matches("x"));
}

TEST(PrefixTable, MatchesEverythingWithAnEmptyPrefix)
{
    const PrefixTable table({"", "x"});
    EXPECT_TRUE(table.matches(""));
    EXPECT_TRUE(table.matches("y"));
}

} // namespace
} // namespace velmora
