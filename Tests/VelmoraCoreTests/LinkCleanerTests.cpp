#include <VelmoraCore/LinkCleaner.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace velmora {
namespace {

using namespace std::string_view_literals;
using Configuration = LinkCleanerConfiguration;
using Items = std::vector<RemovedQueryItem>;

LinkCleaningResult clean(std::string_view text, const Configuration::Strings &ignoredHosts = {})
{
    return LinkCleaner(Configuration::withDefaultRules(ignoredHosts)).clean(text);
}

std::string cleaned(std::string_view text, const Configuration::Strings &ignoredHosts = {})
{
    return clean(text, ignoredHosts).cleanedText;
}

void expectUnchanged(std::string_view text, const Configuration::Strings &ignoredHosts = {})
{
    const LinkCleaningResult result = clean(text, ignoredHosts);
    EXPECT_EQ(result.cleanedText, text);
    EXPECT_TRUE(result.removedItems.empty()) << text;
    EXPECT_FALSE(result.didChange());
}

TEST(LinkCleaner, CleansALinkWhoseSchemeIsInUpperCase)
{
    EXPECT_EQ(cleaned("HTTPS://E.COM/P?utm_source=a&id=7"), "HTTPS://E.COM/P?id=7");
    EXPECT_EQ(cleaned("hTTp://e.com/?fbclid=1"), "hTTp://e.com/");
}

TEST(LinkCleaner, LeavesLinksOfOtherSchemesUnchanged)
{
    expectUnchanged("ftp://e.com/x?utm_source=a");
    expectUnchanged("mailto:a@e.com?utm_source=a");
    expectUnchanged("git+https://e.com/x?utm_source=a");
    expectUnchanged("tel:+49123?utm_source=a");
    const LinkCleaner cleaner(Configuration::withDefaultRules());
    for (const char *url :
         {"ftp://e.com/?utm_source=a", "mailto:a@e.com?utm_source=a", "//e.com/?utm_source=a",
          "e.com/?utm_source=a", "1x://e.com/?utm_source=a", "http://[::1/?utm_source=a",
          "http://e.com:x/?utm_source=a", "http://a b/?utm_source=a", "http://e.com", ""})
        EXPECT_EQ(cleaner.cleanUrl(url), (CleanedUrl{url, {}}));
}

TEST(LinkCleaner, CleansAUrlWithTheSameRules)
{
    const LinkCleaner cleaner(Configuration::withDefaultRules());
    EXPECT_EQ(cleaner.cleanUrl("https://u:p@e.com:8/x?a&utm_source=%20y#z"),
              (CleanedUrl{"https://u:p@e.com:8/x?a#z", {{"utm_source", " y"}}}));
    EXPECT_EQ(cleaner.cleanUrl("https:///p?utm_source=a"), (CleanedUrl{"https:///p", {{"utm_source", "a"}}}));
    EXPECT_EQ(cleaner.cleanUrl("http:p?utm_source=a"), (CleanedUrl{"http:p", {{"utm_source", "a"}}}));
}

TEST(LinkCleaner, KeepsTheFragmentAndReportsTheRemovedItem)
{
    const LinkCleaningResult result = clean("https://e.com/p?utm_source=a&id=7#top");
    EXPECT_EQ(result.cleanedText, "https://e.com/p?id=7#top");
    EXPECT_EQ(result.removedItems, (Items{{"utm_source", "a"}}));
    EXPECT_TRUE(result.didChange());
}

TEST(LinkCleaner, LeavesAQuestionMarkInTheFragmentAlone)
{
    expectUnchanged("https://e.com/#/r?utm_source=a");
    expectUnchanged("https://e.com#?utm_source=a&fbclid=b");
    EXPECT_EQ(cleaned("https://e.com/?utm_source=a#/r?utm_source=b"), "https://e.com/#/r?utm_source=b");
}

TEST(LinkCleaner, DropsTheQuestionMarkWhenOnlyTrackersStoodBehindIt)
{
    EXPECT_EQ(cleaned("https://e.com/p?utm_source=a&fbclid=b"), "https://e.com/p");
    EXPECT_EQ(cleaned("https://e.com?gclid=1#f"), "https://e.com#f");
}

TEST(LinkCleaner, RemovesNamesInAnyCaseAndWithBlanksAroundThemAndReportsThemAsWritten)
{
    const LinkCleaningResult result = clean("https://e.com/?UTM_Medium=a&%20fbclid%20=b&id=1");
    EXPECT_EQ(result.cleanedText, "https://e.com/?id=1");
    EXPECT_EQ(result.removedItems, (Items{{"UTM_Medium", "a"}, {" fbclid ", "b"}}));
}

TEST(LinkCleaner, RemovesValueSensitiveNamesOnlyWithTheirValues)
{
    EXPECT_EQ(cleaned("https://e.com/?source=Newsletter&x=1"), "https://e.com/?x=1");
    EXPECT_EQ(cleaned("https://e.com/?source=%20AD%0A&x=1"), "https://e.com/?x=1");
    EXPECT_EQ(cleaned("https://e.com/?SRC=email"), "https://e.com/");
    expectUnchanged("https://e.com/?source=rss");
    expectUnchanged("https://e.com/?source");
    expectUnchanged("https://e.com/?source=");
    expectUnchanged("https://e.com/?src=ig");
}

TEST(LinkCleaner, RemovesAnEmptyValueOnlyWhenTheTableHoldsTheEmptyText)
{
    const LinkCleaner cleaner(Configuration({}, {}, {}, {{"k", {""}}}));
    EXPECT_EQ(cleaner.clean("https://e.com/?k=&k&a").cleanedText, "https://e.com/?k&a");
}

void expectRemovedFromHost(const std::string &host, const std::string &name)
{
    const std::string link = "https://" + host + "/dp/1";
    EXPECT_EQ(cleaned(link + "?" + name + "=abc&th=1"), link + "?th=1");
    EXPECT_EQ(cleaned(link + "?" + name + "=abc"), link);
}

TEST(LinkCleaner, RemovesRetailParametersOnTheStorefrontHostsOnly)
{
    for (const std::string host :
         {"amazon.com", "amazon.de", "amazon.co.uk", "amazon.fr", "amazon.it", "amazon.es"}) {
        for (const std::string name :
             {"ascsubtag", "camp", "creative", "creativeasin", "linkcode", "ref", "refrid", "social_share",
              "tag", "pd_rd_w", "pf_rd_p", "PD_RD_", "LinkCode"}) {
            expectRemovedFromHost(host, name);
            expectRemovedFromHost("www.smile." + host, name);
        }
    }
    for (const std::string host :
         {"notamazon.com", "amazon.com.evil.org", "amazon.nl", "amazon.ca", "e.com"}) {
        const std::string link = "https://" + host + "/?";
        for (const std::string name :
             {"camp=1", "creativeasin=1", "ref=1", "refrid=1", "social_share=1", "tag=1", "pd_rd_w=1"})
            expectUnchanged(link + name);
    }
}

TEST(LinkCleaner, LeavesAnIgnoredHostAndItsSubDomainsAlone)
{
    expectUnchanged("https://e.com/?utm_source=a", {"e.com"});
    expectUnchanged("https://www.e.com/?utm_source=a", {"e.com"});
    expectUnchanged("https://a.b.E.com./?utm_source=a", {"e.com"});
    expectUnchanged("e.com/?utm_source=a", {"e.com"});
    EXPECT_EQ(cleaned("https://note.com/?utm_source=a", {"e.com"}), "https://note.com/");
    EXPECT_EQ(cleaned("https://e.com/?utm_source=a", {"www.e.com"}), "https://e.com/");
    EXPECT_EQ(cleaned("https://e.com.org/?utm_source=a", {"e.com"}), "https://e.com.org/");
}

TEST(LinkCleaner, MatchesNoLinkWithAnEmptyIgnoredHost)
{
    EXPECT_EQ(cleaned("https://e.com/?utm_source=a", {"", " ", "..."}), "https://e.com/");
    EXPECT_EQ(LinkCleaner(Configuration::withDefaultRules({""})).cleanUrl("https:///?utm_source=a").url,
              "https:///");
}

TEST(LinkCleaner, ComparesIgnoredHostsInOneForm)
{
    expectUnchanged("https://bücher.de/?utm_source=a", {"xn--bcher-kva.de"});
    expectUnchanged("https://xn--bcher-kva.de/?utm_source=a", {"BÜCHER.de"});
    expectUnchanged("https://www.BÜCHER.de/?utm_source=a", {"bu\u0308cher.de"});
    expectUnchanged("https://bücher。de/?utm_source=a", {"bücher.de"});
    expectUnchanged("https://[::1]:80/?utm_source=a", {"::1"});
    expectUnchanged("https://[2001:DB8::1]/?utm_source=a", {"[2001:db8::1]"});
    expectUnchanged("https://a%62c.de/?utm_source=a", {"abc.de"});
    expectUnchanged("https://faß.de/?utm_source=a", {"xn--fa-hia.de"});
    EXPECT_EQ(cleaned("https://fass.de/?utm_source=a", {"faß.de"}), "https://fass.de/");
}

TEST(LinkCleaner, CollapsesDuplicatesOnlyWhenSomethingWasRemoved)
{
    EXPECT_EQ(cleaned("https://e.com/?a=1&a=1&utm_source=x"), "https://e.com/?a=1");
    expectUnchanged("https://e.com/?a=1&a=1");
    EXPECT_EQ(cleaned("https://e.com/?A=1&a=1&utm_source=x"), "https://e.com/?A=1");
    EXPECT_EQ(cleaned("https://e.com/?a=X&a=x&utm_source=x"), "https://e.com/?a=X&a=x");
    EXPECT_EQ(cleaned("https://e.com/?a&a=&utm_source=x"), "https://e.com/?a");
    EXPECT_EQ(cleaned("https://e.com/?a=&a&utm_source=x"), "https://e.com/?a=");
    EXPECT_EQ(cleaned("https://e.com/?a&&b&&utm_source=x"), "https://e.com/?a&&b");
    EXPECT_EQ(cleaned("https://e.com/?a=%31&a=1&utm_source=x"), "https://e.com/?a=1");
    EXPECT_EQ(cleaned("https://e.com/?%20a=1&a=1&utm_source=x"), "https://e.com/?%20a=1&a=1");
    EXPECT_EQ(cleaned("https://e.com/?a=%C3%A9&a=e%CC%81&utm_source=x"), "https://e.com/?a=%C3%A9");
    EXPECT_EQ(cleaned("https://e.com/?a=%FF&a=%FE&a=%FF&utm_source=x"), "https://e.com/?a=%FF&a=%FE");
}

TEST(LinkCleaner, DoesNotReportDroppedDuplicates)
{
    EXPECT_EQ(clean("https://e.com/?a=1&a=1&utm_source=x&utm_source=x").removedItems,
              (Items{{"utm_source", "x"}, {"utm_source", "x"}}));
}

TEST(LinkCleaner, KeepsTheOrderOfParametersAndReportsRemovedOnesInTheirOrder)
{
    const LinkCleaningResult result = clean("https://e.com/?z=1&utm_source=a&y=2&fbclid=b&x=3&gclid=c");
    EXPECT_EQ(result.cleanedText, "https://e.com/?z=1&y=2&x=3");
    EXPECT_EQ(result.removedItems, (Items{{"utm_source", "a"}, {"fbclid", "b"}, {"gclid", "c"}}));
}

TEST(LinkCleaner, MatchesAHostWithATrailingDotAsIfTheDotWereAbsent)
{
    EXPECT_EQ(cleaned("https://www.amazon.de./?tag=x&a=1"), "https://www.amazon.de./?a=1");
    EXPECT_EQ(cleaned("https://amazon.de.:443/?tag=x&a=1"), "https://amazon.de.:443/?a=1");
}

TEST(LinkCleaner, ReportsAMissingAnEmptyAndAnUndecodableValue)
{
    EXPECT_EQ(
        clean("https://e.com/?utm_source&utm_term=&utm_id=%FF&utm_content=%zz&utm_x=a%20b+c%2B").removedItems,
        (Items{{"utm_source", std::nullopt},
               {"utm_term", ""},
               {"utm_id", std::nullopt},
               {"utm_content", "%zz"},
               {"utm_x", "a b+c+"}}));
}

TEST(LinkCleaner, RemovesEverythingWithAnEmptyPrefix)
{
    const LinkCleaner cleaner(Configuration({}, {}, {""}, {}));
    EXPECT_EQ(cleaner.clean("https://e.com/?a=1&&b").cleanedText, "https://e.com/");
}

TEST(LinkCleaner, RemovesNothingWithEmptyTablesButTheRetailRule)
{
    const LinkCleaner cleaner(Configuration({}, {}, {}, {}));
    EXPECT_EQ(cleaner.clean("https://e.com/?utm_source=a&source=ad").cleanedText,
              "https://e.com/?utm_source=a&source=ad");
    EXPECT_EQ(cleaner.clean("https://amazon.de/?tag=a&x").cleanedText, "https://amazon.de/?x");
}

TEST(LinkCleaner, FindsNothingUnderNamesWithCapitalsThatWereSetLater)
{
    Configuration configuration({}, {}, {}, {});
    configuration.setTrackedParameterNames({"Abc", "def"});
    configuration.setTrackedParameterPrefixes({"Gh_", "ij_"});
    configuration.setValueSensitiveTrackedParameters({{"K", {"l"}}, {"m", {"N", "o"}}});
    const LinkCleaner cleaner(configuration);
    EXPECT_EQ(
        cleaner.clean("https://e.com/?Abc=1&abc=2&DEF=3&Gh_=4&gh_=5&IJ_x=6&K=l&k=l&M=N&m=n&m=O").cleanedText,
        "https://e.com/?Abc=1&abc=2&Gh_=4&gh_=5&K=l&M=N&m=n");
}

TEST(LinkCleaner, KeepsAValueSensitiveNameWhoseValueIsNotUtf8)
{
    expectUnchanged("https://e.com/?source=%FF&source=ad%C3");
}

TEST(LinkCleaner, ComparesNamesAndValuesUnderCanonicalEquivalence)
{
    const LinkCleaner cleaner(Configuration({}, {"caf\u00E9"}, {"\u00FC_"}, {{"k", {"e\u0301"}}}));
    EXPECT_EQ(cleaner.clean("https://e.com/?cafe%CC%81=1&u%CC%88_x=2&k=%C3%89&a").cleanedText,
              "https://e.com/?a");
    EXPECT_EQ(cleaned("https://e.com/?utm_%CC%81x=1&utm_%C3%A9=2"), "https://e.com/?utm_%CC%81x=1");
    EXPECT_EQ(cleaned("https://e.com/?p%E2%84%AA=1&%E2%80%8Bpk_x=1&p%E2%84%AA_x"),
              "https://e.com/?p%E2%84%AA=1");
}

TEST(LinkCleaner, KnowsNamesThatBeginWithAnIdeograph)
{
    const LinkCleaner cleaner(Configuration({}, {"漢字"}, {"追_"}, {}));
    EXPECT_EQ(cleaner.clean("https://e.com/?漢字=1&漢=2&追_a=3&字漢=4").cleanedText,
              "https://e.com/?%E6%BC%A2=2&%E5%AD%97%E6%BC%A2=4");
    const LinkCleaner all(Configuration({}, {}, {""}, {}));
    EXPECT_EQ(all.clean("https://e.com/?漢=1").cleanedText, "https://e.com/");
}

TEST(CleaningText, GivesAnEmptyResultForAnEmptyText)
{
    EXPECT_EQ(clean(""), (LinkCleaningResult{"", "", {}}));
    EXPECT_FALSE(clean("").didChange());
}

TEST(CleaningText, CleansTwoLinksAndLeavesTheProseBetweenThem)
{
    const LinkCleaningResult result =
        clean("First  https://a.com/?utm_source=1&x=1,\r\n\tthen http://b.com/?gclid=2&fbclid=3 .\n");
    EXPECT_EQ(result.cleanedText, "First  https://a.com/?x=1,\r\n\tthen http://b.com/ .\n");
    EXPECT_EQ(result.removedItems, (Items{{"utm_source", "1"}, {"gclid", "2"}, {"fbclid", "3"}}));
}

TEST(CleaningText, DoesNotRewriteALinkWithoutTrackersHoweverItIsSpelt)
{
    expectUnchanged("https://e.com/p?q=%41%7e&r=a|b&s=%2f&&t==&t==");
    expectUnchanged("example.com?q=%41");
}

TEST(CleaningText, ChangesTheTextExactlyWhenSomethingIsReported)
{
    EXPECT_TRUE(clean("x https://e.com/?utm_source=1 y").didChange());
    EXPECT_FALSE(clean("x https://e.com/?a=1&a=1 y").didChange());
    EXPECT_TRUE(clean("x https://e.com/?a=1&a=1 y").removedItems.empty());
}

TEST(CleaningText, ReplacesALinkBehindCharactersOutsideTheBasicPlane)
{
    EXPECT_EQ(cleaned("🙂👨‍👩‍👧 https://e.com/?utm_source=a 🙂"),
              "🙂👨‍👩‍👧 https://e.com/ 🙂");
    EXPECT_EQ(cleaned("🙂https://e.com/🙂?utm_source=a#🙂"), "🙂https://e.com/🙂#🙂");
}

TEST(CleaningText, SuppliesTheSchemeOnlyForLinksThatLostSomething)
{
    EXPECT_EQ(cleaned("example.com/?utm_source=a example.com/?id=1"),
              "http://example.com/ example.com/?id=1");
    EXPECT_EQ(cleaned("www.example.zz?utm_source=a"), "http://www.example.zz");
}

TEST(CleaningText, KeepsInvalidBytesAndNulAroundLinks)
{
    EXPECT_EQ(cleaned("\xFF\0 https://e.com/?utm_source=a \xC3\x28\0"sv),
              "\xFF\0 https://e.com/ \xC3\x28\0"sv);
    EXPECT_EQ(cleaned("https://e.com/?utm_source=a\xFF&x=1"sv), "https://e.com/\xFF&x=1"sv);
    EXPECT_EQ(cleaned("https://e.com/?utm_source=a\0b"sv), "https://e.com/\0b"sv);
}

TEST(CleaningText, GivesTheSameEditsAsTheCleanedText)
{
    const std::string_view text = "a https://e.com/?utm_source=1&k=%2f b example.com?gclid=2.";
    const std::vector<LinkEdit> edits = LinkCleaner(Configuration::withDefaultRules()).edits(text);
    ASSERT_EQ(edits.size(), 2U);
    EXPECT_EQ(edits[0], (LinkEdit{2, 33, "https://e.com/?k=/", {{"utm_source", "1"}}}));
    EXPECT_EQ(edits[1], (LinkEdit{38, 19, "http://example.com", {{"gclid", "2"}}}));
}

// Writes down all it is told.
class Protocol final : public CleaningVisitor {
public:
    void visitRemovedItem(std::string_view name, std::optional<std::string_view> value) override
    {
        told.push_back("removed " + std::string(name) + (value ? '=' + std::string(*value) : ""));
    }

    void visitCleanedLink(std::size_t offset, std::size_t length, std::string_view replacement) override
    {
        told.push_back(std::to_string(offset) + '+' + std::to_string(length) + ' ' +
                       std::string(replacement));
    }

    std::vector<std::string> told;
};

TEST(AppendingCleanedText, TellsTheVisitorOfItemsAndThenOfTheirLinkInOrder)
{
    const std::string_view text = "a https://e.com/?utm_source=1%20&k=%2f&si#f b example.com?gclid=%FF. c";
    std::string output = "kept|";
    Protocol protocol;
    EXPECT_TRUE(
        LinkCleaner(LinkCleanerConfiguration::withDefaultRules()).appendCleaned(text, output, &protocol));
    EXPECT_EQ(output, "kept|a https://e.com/?k=/#f b http://example.com. c");
    EXPECT_EQ(protocol.told,
              (std::vector<std::string>{"removed utm_source=1 ", "removed si", "2+41 https://e.com/?k=/#f",
                                        "removed gclid", "46+21 http://example.com"}));
}

TEST(AppendingCleanedText, NeedsNoVisitor)
{
    std::string output;
    EXPECT_TRUE(LinkCleaner(LinkCleanerConfiguration::withDefaultRules())
                    .appendCleaned("https://e.com/?si=1&x https://e.com/?si#a?", output));
    EXPECT_EQ(output, "https://e.com/?x https://e.com/#a?");
}

TEST(AppendingCleanedText, AppendsATextThatHoldsNothingToRemoveAsItIs)
{
    for (const std::string_view text : {""sv, "a\0b"sv, "https://e.com/?x=%2f"sv, "https://a.com/?si=1"sv}) {
        std::string output = "kept|";
        Protocol protocol;
        EXPECT_FALSE(LinkCleaner(LinkCleanerConfiguration::withDefaultRules({"a.com"}))
                         .appendCleaned(text, output, &protocol));
        EXPECT_EQ(output, "kept|" + std::string(text));
        EXPECT_TRUE(protocol.told.empty());
    }
}

TEST(CleaningText, CleansCopiesOfACleanerAlike)
{
    std::optional<LinkCleaner> original(Configuration::withDefaultRules({"a.com"}));
    const LinkCleaner copy = *original;
    EXPECT_EQ(copy.configuration(), original->configuration());
    original.reset(); // What the copies share outlives it.
    EXPECT_EQ(copy.clean("https://a.com/?si=1 https://b.com/?si=1").cleanedText,
              "https://a.com/?si=1 https://b.com/");
}

TEST(LinkCleaningResult, ComparesAllFields)
{
    const LinkCleaningResult result{"a", "b", {{"n", "v"}}};
    EXPECT_EQ(result, (LinkCleaningResult{"a", "b", {{"n", "v"}}}));
    EXPECT_NE(result, (LinkCleaningResult{"x", "b", {{"n", "v"}}}));
    EXPECT_NE(result, (LinkCleaningResult{"a", "x", {{"n", "v"}}}));
    EXPECT_NE(result, (LinkCleaningResult{"a", "b", {}}));
    EXPECT_NE((RemovedQueryItem{"n", ""}), (RemovedQueryItem{"n", std::nullopt}));
}

} // namespace
} // namespace velmora
