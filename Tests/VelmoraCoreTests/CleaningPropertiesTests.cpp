#include "Delimiters.h"
#include "ReferenceCleaning.h"

#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/LinkDetector.h>

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

namespace velmora {
namespace {

using namespace std::string_view_literals;

const LinkCleaner &cleaner()
{
    static const LinkCleaner instance(LinkCleanerConfiguration::withDefaultRules());
    return instance;
}

// What stands around both, and what may stand behind without a blank.
constexpr auto fronts = std::to_array<std::string_view>(
    {"", " ", "see ", "看", "{\"a\":1,\"u\":", "x=", "a,b,", "[1]: ", "<li>", "- ", "> ", "\xC3", "(", "**"});
constexpr auto tails = std::to_array<std::string_view>(
    {"",     " b", "b",        "Bob",        ",\"b\":2}", ",Bob,[Berlin]", ")",  "]}",
     "</a>", ".",  "\nThanks", "真的很便宜", "=1",        "|x|",           "\"", "'",
     ";",    "é",  "😂",        "#top",       "/x",        "%41%zz"});
constexpr auto links = std::to_array<std::string_view>({
    "https://a.com/?utm_source=x",
    "https://a.com/p?id=5&utm_source=x",
    "https://a.com/p?utm_source=x&id=5",
    "http://a.com?fbclid=Iw-A_1.2~3&utm_x=%2C%7C",
});

TEST(CleaningProperties, KeepsTheDelimiterBehindALinkAndTheTextBehindThat)
{
    for (const Delimiters &pair : delimiterPairs()) {
        for (const std::string_view front : fronts) {
            for (const std::string_view tail : tails) {
                if (pair.before.empty() && (tail.starts_with('=') || tail.starts_with('%') || tail == "é"))
                    continue; // Punctuation within a value, as in "id=5...é", whose spelling changes.
                const bool beginsText = (front.empty() || front == " ") && pair.before.empty();
                const std::string end = std::string(pair.behind).append(tail);
                if (beginsText && end.find_first_of(" \n") == std::string::npos)
                    continue; // A link that is the whole text has nothing behind it.
                for (const std::string_view link : links) {
                    const std::string before = std::string(front).append(pair.before);
                    const std::string behind = std::string(pair.behind).append(tail);
                    const std::string text = std::string(before).append(link).append(behind);
                    const std::string cleaned = cleaner().clean(text).cleanedText;
                    ASSERT_TRUE(cleaned.starts_with(before)) << text << '\n' << cleaned;
                    ASSERT_TRUE(cleaned.ends_with(behind)) << text << '\n' << cleaned;
                    ASSERT_GE(cleaned.size(), before.size() + behind.size());
                    ASSERT_EQ(cleaner().clean(cleaned).cleanedText, cleaned) << text;
                    ASSERT_EQ(cleaner().edits(text), referenceEdits(cleaner(), text)) << text;
                }
            }
        }
    }
}

TEST(CleaningProperties, TakesTheTrackerBetweenDelimiters)
{
    for (const Delimiters &pair : delimiterPairs()) {
        const std::string before = std::string("see ").append(pair.before);
        const std::string behind = std::string(pair.behind).append(" b");
        const auto around = [&](std::string_view link) {
            return std::string(before).append(link).append(behind);
        };
        EXPECT_EQ(cleaner().clean(around("https://a.com/p?id=5&utm_source=x")).cleanedText,
                  around("https://a.com/p?id=5"));
    }
}

TEST(CleaningProperties, CleansALinkAsWhatTheDetectorShows)
{
    for (const Delimiters &pair : delimiterPairs()) {
        const std::string text =
            std::string(pair.before).append("https://a.com/p?id=5&utm_source=x").append(pair.behind);
        if (pair.behind == "-->")
            continue; // Hyphens end many links; the cleaner alone knows that nothing kept ends there.
        const std::vector<LinkMatch> matches = LinkDetector().matches(text);
        ASSERT_EQ(matches.size(), 1U) << text;
        EXPECT_EQ(matches[0].url, "https://a.com/p?id=5&utm_source=x") << text;
    }
}

} // namespace
} // namespace velmora
