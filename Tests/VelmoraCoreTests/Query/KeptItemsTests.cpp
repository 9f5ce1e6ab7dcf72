#include <VelmoraCore/Query/KeptItems.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velmora {
namespace {

TEST(KeptItems, FindsEqualPlainItemsAmongFew)
{
    KeptItems kept;
    EXPECT_TRUE(kept.isNew({"a", "1"}));
    EXPECT_TRUE(kept.isNew({"a", "2"}));
    EXPECT_FALSE(kept.isNew({"A", "1"}));
    EXPECT_TRUE(kept.isNew({"b", std::nullopt}));
    EXPECT_FALSE(kept.isNew({"B", ""}));
}

TEST(KeptItems, RemembersPlainItemsWhenOthersFollow)
{
    KeptItems kept;
    EXPECT_TRUE(kept.isNew({"a", "1"}));
    EXPECT_TRUE(kept.isNew({"\u00E9", "1"}));
    EXPECT_FALSE(kept.isNew({"e%CC%81", "%31"}));
    EXPECT_FALSE(kept.isNew({"%41", "1"}));
    EXPECT_TRUE(kept.isNew({"%FF", "1"}));
    EXPECT_TRUE(kept.isNew({"%FE", "1"}));
    EXPECT_FALSE(kept.isNew({"%FF", "1"}));
}

TEST(KeptItems, ComparesNameAndValueAsTheirOneKey)
{
    KeptItems kept;
    EXPECT_TRUE(kept.isNew({"a%3Db", "c"}));
    EXPECT_FALSE(kept.isNew({"a", "b%3Dc"}));
}

TEST(KeptItems, TellsManyItemsApart)
{
    std::vector<std::string> names(5000);
    int number = 0;
    for (std::string &name : names)
        name = "name" + std::to_string(number++);
    KeptItems kept;
    for (const std::string &name : names)
        EXPECT_TRUE(kept.isNew({name, "1"}));
    for (const std::string &name : names)
        EXPECT_FALSE(kept.isNew({name, "1"}));
}

} // namespace
} // namespace velmora
