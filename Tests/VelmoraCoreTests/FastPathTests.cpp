#include "AdversarialTexts.h"
#include "Corpora.h"
#include "ReferenceCleaning.h"

#include <VelmoraCore/LinkCleaner.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

namespace velmora {
namespace {

using Configuration = LinkCleanerConfiguration;

const LinkCleaner &cleaner()
{
    static const LinkCleaner instance(Configuration::withDefaultRules({"ignored.com"}));
    return instance;
}

// The quick search gives what detecting everything gives, and a cleaned text is clean.
void expectSameAsReference(std::string_view text)
{
    const std::vector<LinkEdit> edits = cleaner().edits(text);
    EXPECT_EQ(edits, referenceEdits(cleaner(), text)) << text.substr(0, 200);
    const LinkCleaningResult result = cleaner().clean(text);
    EXPECT_EQ(result.didChange(), !edits.empty());
    std::string appended;
    EXPECT_EQ(cleaner().appendCleaned(text, appended), result.didChange());
    EXPECT_EQ(appended, result.cleanedText);
}

TEST(FastPath, GivesWhatDetectingEverythingGivesOnAdversarialTexts)
{
    for (const AdversarialFamily &family : adversarialFamilies()) {
        SCOPED_TRACE(family.name);
        expectSameAsReference(family.text(4096));
    }
}

TEST(FastPath, GivesWhatDetectingEverythingGivesOnEverydayTexts)
{
    expectSameAsReference(corpora::prose(20000));
    expectSameAsReference(corpora::proseWithLinks(50000, 300));
    expectSameAsReference(corpora::linkLines(500));
    EXPECT_EQ(cleaner().edits(corpora::linkLines(500)).size(), 500U);
}

TEST(FastPath, GivesWhatDetectingEverythingGivesOnTextsMadeOfPieces)
{
    constexpr auto pieces = std::to_array<std::string_view>({"https://",
                                                             "http://",
                                                             "HTTP://",
                                                             "ftp://",
                                                             "mailto:",
                                                             "www.",
                                                             "e.com",
                                                             "amazon.de",
                                                             "ignored.com",
                                                             "a@b.com",
                                                             "readme.md",
                                                             "/",
                                                             "?",
                                                             "&",
                                                             "=",
                                                             "#",
                                                             "utm_source",
                                                             "si",
                                                             "tag",
                                                             "id",
                                                             "%",
                                                             "%41",
                                                             "%FF",
                                                             "%zz",
                                                             "+",
                                                             ".",
                                                             ",",
                                                             ":",
                                                             ";",
                                                             "(",
                                                             ")",
                                                             "[",
                                                             "]",
                                                             "\"",
                                                             "\\\"",
                                                             "'",
                                                             "<",
                                                             ">",
                                                             " ",
                                                             "\n",
                                                             "\t",
                                                             "@",
                                                             "-",
                                                             "_",
                                                             "é",
                                                             "漢",
                                                             "。",
                                                             "，",
                                                             "🙂",
                                                             "\u0301",
                                                             "\u00A0",
                                                             "\xFF",
                                                             "\xE2",
                                                             "x",
                                                             "1",
                                                             ":80",
                                                             "localhost",
                                                             "[::1]",
                                                             "bücher.de",
                                                             "utm_",
                                                             "?utm_source=a",
                                                             "&fbclid=1",
                                                             "amp;utm_x=1",
                                                             "source=ad",
                                                             "!",
                                                             "|",
                                                             "~",
                                                             "*",
                                                             "`",
                                                             "{",
                                                             "}"});
    std::uint64_t state = 7;
    const auto below = [&state](std::size_t bound) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::size_t>(state >> 33) % bound;
    };
    for (int round = 0; round < 40000; ++round) {
        std::string text;
        for (std::size_t count = 1 + below(14); count > 0; --count)
            text += pieces[below(pieces.size())];
        expectSameAsReference(text);
    }
}

} // namespace
} // namespace velmora
