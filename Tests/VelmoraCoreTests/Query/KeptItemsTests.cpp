#include <VelmoraCore/Query/KeptItems.h>
#include <VelmoraCore/Query/QueryItemReader.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velmora {
namespace {

// Of each item of the query, in their order, whether it is new.
std::vector<bool> newOnes(const std::string &query)
{
    std::vector<bool> news;
    KeptItems kept(query);
    QueryItemReader reader(query);
    for (QueryItem item; reader.next(item);)
        news.push_back(kept.isNew(item));
    return news;
}

using News = std::vector<bool>;

TEST(KeptItems, FindsEqualPlainItemsAmongFew)
{
    EXPECT_EQ(newOnes("a=1&a=2&A=1&b&B="), (News{true, true, false, true, false}));
}

TEST(KeptItems, RemembersPlainItemsWhenOthersFollow)
{
    EXPECT_EQ(newOnes("a=1&\u00E9=1&e%CC%81=%31&%41=1&%FF=1&%FE=1&%FF=1"),
              (News{true, true, false, false, true, true, false}));
}

TEST(KeptItems, ComparesNameAndValueAsTheirOneKey)
{
    EXPECT_EQ(newOnes("a%3Db=c&a=b%3Dc"), (News{true, false}));
}

TEST(KeptItems, TellsManyItemsApart)
{
    std::string query;
    for (int number = 0; number < 5000; ++number)
        query += "name" + std::to_string(number) + "=1&";
    std::string twice = query;
    twice.append(query).append("name=1");
    News expected(5000, true);
    expected.insert(expected.end(), 5000, false);
    expected.push_back(true);
    EXPECT_EQ(newOnes(twice), expected);
}

} // namespace
} // namespace velmora
