#include "AdversarialTexts.h"
#include "Corpora.h"
#include "Numbers.h"
#include "ReferenceCleaning.h"

#include <VelmoraCore/LinkCleaner.h>

#include <gtest/gtest.h>

#include <array>
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
    EXPECT_EQ(cleaner().clean(result.cleanedText).cleanedText, result.cleanedText) << text.substr(0, 200);
    // A piece of a stream may be a link and nothing else, but is never all there is.
    const LinkCleaningResult amongOthers = cleaner().clean("x " + std::string(text));
    std::string appended = "x ";
    EXPECT_EQ(cleaner().appendCleaned(text, appended), amongOthers.didChange());
    EXPECT_EQ(appended, amongOthers.cleanedText);
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
                                                             "}",
                                                             "^",
                                                             "$",
                                                             "%22",
                                                             "mailto:^a@b.com?"});
    Numbers numbers(7);
    for (int round = 0; round < 40000; ++round) {
        std::string text;
        for (std::size_t count = 1 + numbers.below(14); count > 0; --count)
            text += numbers.pick(pieces);
        expectSameAsReference(text);
    }
}

// Links that are read in one pass, and links that differ from those in one character.
TEST(FastPath, GivesWhatDetectingEverythingGivesOnPlainLinks)
{
    constexpr auto befores =
        std::to_array<std::string_view>({"", "", "", " ", "see ", "\n", "<", "(", "_", "a"});
    constexpr auto behinds =
        std::to_array<std::string_view>({"", " ", "\n", ">", ". ", "! ", "?! ", "_ ", " + x"});
    constexpr auto hosts = std::to_array<std::string_view>(
        {"e.com", "www.amazon.de", "ignored.com", "a-b.c", "-a.b", "a-.b", "a..b", "a.", "a.b:80", "u@a.b",
         "localhost", "bücher.de", "xn--bcher-kva.de", "a_b.c"});
    constexpr auto paths = std::to_array<std::string_view>(
        {"", "/", "/a", "/a/b-c_d.html", "/a=b&c", "/~a$b%20", "/a;b", "/#a", "/(a)", "/a:b", "/a,b!"});
    constexpr auto names =
        std::to_array<std::string_view>({"utm_source", "UTM_x", "si", "tag", "ref_id", "id", "ID", "q",
                                         "source", "amp;utm_x", "a.b", "a%62", "fbclid", "", "https", "漢"});
    constexpr auto values = std::to_array<std::string_view>(
        {"",    "=",  "=1",   "=ad",  "=a_b-c", "=a=b", "=a.b", "=a...b", "=a,b", "=a!", "=a?", "=a??b",
         "=a~", "=$", "=%20", "=a+b", "=a|b",   "=(a)", "=é",   "=a*",    "=-",   "=3D", "=a/", "=a@b"});
    Numbers numbers(7);
    for (int round = 0; round < 60000; ++round) {
        std::string text(numbers.pick(befores));
        text += numbers.below(2) == 0 ? "https://" : "http://";
        text.append(numbers.pick(hosts)).append(numbers.pick(paths));
        std::string_view separator = "?";
        for (std::size_t count = numbers.below(6) * (round % 50 == 0 ? 5 : 1) + 1; count > 0; --count) {
            text.append(separator).append(numbers.pick(names)).append(numbers.pick(values));
            separator = numbers.below(12) == 0 ? "&&" : "&";
        }
        if (numbers.below(8) == 0)
            text[numbers.below(text.size())] = static_cast<char>(numbers.below(256));
        expectSameAsReference(text.append(numbers.pick(behinds)));
    }
}

} // namespace
} // namespace velmora
