#include "MarkedTexts.h"
#include "ReferenceCleaning.h"

#include <VelmoraCore/LinkCleaner.h>

#include <gtest/gtest.h>

#include <cctype>
#include <string>

namespace velmora {
namespace {

const LinkCleaner &cleaner()
{
    static const LinkCleaner instance(LinkCleanerConfiguration::withDefaultRules());
    return instance;
}

std::string nameOf(const testing::TestParamInfo<MarkedTexts> &info)
{
    std::string name;
    bool begins = true;
    for (const char c : info.param.sentence) {
        const bool isLetter = std::isalnum(static_cast<unsigned char>(c)) != 0;
        if (isLetter)
            name += static_cast<char>(begins ? std::toupper(static_cast<unsigned char>(c)) : c);
        begins = !isLetter;
    }
    return name;
}

class AroundTheLink : public testing::TestWithParam<MarkedTexts> {};

TEST_P(AroundTheLink, TheTextStays)
{
    EXPECT_FALSE(GetParam().texts.empty());
    for (const MarkedText &row : GetParam().texts) {
        const LinkCleaningResult result = cleaner().clean(row.text);
        EXPECT_EQ(result.cleanedText, row.cleaned);
        EXPECT_EQ(result.removedItems.empty(), row.text == row.cleaned) << row.text;
        EXPECT_EQ(cleaner().clean(row.cleaned).cleanedText, row.cleaned);
        EXPECT_EQ(cleaner().edits(row.text), referenceEdits(cleaner(), row.text)) << row.text;
    }
}

INSTANTIATE_TEST_SUITE_P(, AroundTheLink, testing::ValuesIn(markedTexts("AroundTheLink.txt")), nameOf);

TEST(AroundTheLinkData, HoldsSeveralHundredTexts)
{
    std::size_t count = 0;
    for (const MarkedTexts &block : markedTexts("AroundTheLink.txt"))
        count += block.texts.size();
    EXPECT_GT(count, 400U);
}

} // namespace
} // namespace velmora
