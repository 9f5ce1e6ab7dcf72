#include <VelmoraCore/LinkCleanerConfiguration.h>

#include <gtest/gtest.h>

namespace velmora {
namespace {

using Configuration = LinkCleanerConfiguration;
using Strings = Configuration::Strings;
using ValueTable = Configuration::ValueTable;

TEST(LinkCleanerConfiguration, StoresAnIgnoredHostInLowerCaseWithoutBlanksAndDots)
{
    const Configuration configuration({" .Example.COM. ", "\tWWW.a.de\r\n"}, {}, {}, {});
    EXPECT_EQ(configuration.ignoredHosts(), (Strings{"example.com", "www.a.de"}));
}

TEST(LinkCleanerConfiguration, StripsDotsOfAHostAfterBlanksOnly)
{
    // Blanks inside the dots are no surrounding blanks.
    const Configuration configuration({". a.com ."}, {}, {}, {});
    EXPECT_EQ(configuration.ignoredHosts(), Strings{" a.com "});
}

TEST(LinkCleanerConfiguration, StoresTrackedNamesAndPrefixesTrimmedInLowerCase)
{
    const Configuration configuration({}, {"  UTM_Source\n"}, {"P.UTM_"}, {});
    EXPECT_EQ(configuration.trackedParameterNames(), Strings{"utm_source"});
    EXPECT_EQ(configuration.trackedParameterPrefixes(), Strings{"p.utm_"});
}

TEST(LinkCleanerConfiguration, KeepsTheDotsOfNamesAndPrefixes)
{
    const Configuration configuration({}, {".A."}, {".p."}, {});
    EXPECT_EQ(configuration.trackedParameterNames(), Strings{".a."});
    EXPECT_EQ(configuration.trackedParameterPrefixes(), Strings{".p."});
}

TEST(LinkCleanerConfiguration, StoresKeysAndValuesOfTheValueTableTrimmedInLowerCase)
{
    const Configuration configuration({}, {}, {}, {{" Source ", {" AD", "Mail\t"}}});
    EXPECT_EQ(configuration.valueSensitiveTrackedParameters(), (ValueTable{{"source", {"ad", "mail"}}}));
}

TEST(LinkCleanerConfiguration, LowersLettersOutsideAsciiWithoutTheFinalSigmaRule)
{
    const Configuration configuration({}, {"ΟΔΟΣ", "ÄÖÜ", "\u0130"}, {}, {});
    EXPECT_EQ(configuration.trackedParameterNames(), (Strings{"οδοσ", "äöü", "i\u0307"}));
}

TEST(LinkCleanerConfiguration, StoresAHostOfDotsOrSpacesAsTheEmptyText)
{
    EXPECT_EQ(Configuration({"..."}, {}, {}, {}).ignoredHosts(), Strings{""});
    EXPECT_EQ(Configuration({"   "}, {}, {}, {}).ignoredHosts(), Strings{""});
    EXPECT_EQ(Configuration({"", " . "}, {}, {}, {}).ignoredHosts(), Strings{""});
}

TEST(LinkCleanerConfiguration, CountsEntriesThatBecomeEqualOnce)
{
    const Configuration configuration({"A.com", "a.com.", " a.COM"}, {"Si", "si "}, {}, {});
    EXPECT_EQ(configuration.ignoredHosts(), Strings{"a.com"});
    EXPECT_EQ(configuration.trackedParameterNames(), Strings{"si"});
}

TEST(LinkCleanerConfiguration, CountsCanonicallyEquivalentEntriesOnce)
{
    EXPECT_EQ(Configuration({}, {"\u00E9", "e\u0301"}, {}, {}).trackedParameterNames().size(), 1U);
}

TEST(LinkCleanerConfiguration, IsEqualWhenBuiltFromTheSameInputsInAnotherOrder)
{
    const Configuration one({"a.com", "b.com"}, {"x", "y"}, {"p_", "q_"}, {{"s", {"1", "2"}}, {"t", {}}});
    const Configuration other({"b.com", "a.com"}, {"y", "x"}, {"q_", "p_"}, {{"t", {}}, {"s", {"2", "1"}}});
    EXPECT_EQ(one, other);
}

TEST(LinkCleanerConfiguration, IsUnequalWhenOneFieldDiffers)
{
    const Configuration base({"a.com"}, {"x"}, {"p_"}, {{"s", {"1"}}});
    EXPECT_NE(base, Configuration({"b.com"}, {"x"}, {"p_"}, {{"s", {"1"}}}));
    EXPECT_NE(base, Configuration({"a.com"}, {"y"}, {"p_"}, {{"s", {"1"}}}));
    EXPECT_NE(base, Configuration({"a.com"}, {"x"}, {"q_"}, {{"s", {"1"}}}));
    EXPECT_NE(base, Configuration({"a.com"}, {"x"}, {"p_"}, {{"s", {"2"}}}));
    EXPECT_NE(base, Configuration({"a.com"}, {"x"}, {"p_"}, {{"s", {"1"}}, {"t", {}}}));
}

TEST(LinkCleanerConfiguration, StoresAFieldThatIsSetLaterAsGiven)
{
    Configuration configuration({}, {}, {}, {});
    configuration.setIgnoredHosts({" A.com. "});
    configuration.setTrackedParameterNames({"UTM "});
    configuration.setTrackedParameterPrefixes({"P_"});
    configuration.setValueSensitiveTrackedParameters({{"K", {"V"}}});
    EXPECT_EQ(configuration.ignoredHosts(), Strings{" A.com. "});
    EXPECT_EQ(configuration.trackedParameterNames(), Strings{"UTM "});
    EXPECT_EQ(configuration.trackedParameterPrefixes(), Strings{"P_"});
    EXPECT_EQ(configuration.valueSensitiveTrackedParameters(), (ValueTable{{"K", {"V"}}}));
}

TEST(LinkCleanerConfigurationDeathTest, StopsTheProgramWhenTwoKeysDifferOnlyByCase)
{
    EXPECT_DEATH(Configuration({}, {}, {}, {{"Source", {"a"}}, {"source", {"b"}}}),
                 "Duplicate values for key: 'source'");
}

TEST(LinkCleanerConfigurationDeathTest, StopsTheProgramWhenTwoKeysDifferOnlyByBlanks)
{
    EXPECT_DEATH(Configuration({}, {}, {}, {{"Source", {"a"}}, {" source", {"a"}}}),
                 "Duplicate values for key: 'source'");
}

TEST(LinkCleanerConfiguration, HasTheDefaultTablesEntryForEntry)
{
    const Strings names = {"_hsenc",
                           "_hsmi",
                           "__twitter_impression",
                           "ascsubtag",
                           "awc",
                           "campaignid",
                           "cjdata",
                           "cjevent",
                           "clickref",
                           "clickref2",
                           "creative",
                           "dclid",
                           "elq",
                           "elqak",
                           "elqaid",
                           "elqat",
                           "elqcampaignid",
                           "elqtrackid",
                           "epik",
                           "fbclid",
                           "fb_action_ids",
                           "fb_action_types",
                           "fb_ref",
                           "fb_source",
                           "feature",
                           "gad_adgroupid",
                           "gad_campaignid",
                           "gad_keywordid",
                           "gad_matchtype",
                           "gad_source",
                           "gbraid",
                           "gclid",
                           "gclsrc",
                           "igsh",
                           "igshid",
                           "irclickid",
                           "li_fat_id",
                           "linkcode",
                           "mc_cid",
                           "mc_eid",
                           "mibextid",
                           "mkt_tok",
                           "msclkid",
                           "oly_anon_id",
                           "oly_enc_id",
                           "rb_clickid",
                           "rdt_cid",
                           "refid",
                           "ref_src",
                           "si",
                           "srsltid",
                           "spm",
                           "sv1",
                           "sv_affiliate_id",
                           "sv_campaign_id",
                           "sv_tax1",
                           "sv_tax2",
                           "sv_tax3",
                           "sv_tax4",
                           "tgclid",
                           "ttclid",
                           "twclid",
                           "wbraid",
                           "wickedid",
                           "yclid"};
    EXPECT_EQ(Configuration::defaultTrackedParameterNames(), names);
    EXPECT_EQ(Configuration::defaultTrackedParameterNames().size(), 65U);

    const Strings prefixes = {"_utm_", "amp;utm_", "hsa_", "mtm_",   "p.utm_", "piwik_",
                              "pk_",   "sa_utm_",  "sc_",  "tyutm_", "utm_",   "vero_"};
    EXPECT_EQ(Configuration::defaultTrackedParameterPrefixes(), prefixes);
    EXPECT_EQ(Configuration::defaultTrackedParameterPrefixes().size(), 12U);

    const ValueTable values = {
        {"source", {"ad",         "affiliate", "affiliatewindow", "aw",     "awin",   "bing",      "email",
                    "facebook",   "fb",        "google",          "idealo", "ig",     "instagram", "mail",
                    "newsletter", "paid",      "paid_social",     "reddit", "social", "tiktok",    "twitter",
                    "x"}},
        {"src", {"affiliate", "email", "newsletter", "social"}}};
    const ValueTable &table = Configuration::defaultValueSensitiveTrackedParameters();
    EXPECT_EQ(table, values);
    EXPECT_EQ(table.size(), 2U);
    EXPECT_EQ(table.at("source").size(), 22U);
    EXPECT_EQ(table.at("src").size(), 4U);
}

TEST(LinkCleanerConfiguration, KeepsTheDefaultTablesUnchangedByNormalising)
{
    const Configuration configuration({}, Configuration::defaultTrackedParameterNames(),
                                      Configuration::defaultTrackedParameterPrefixes(),
                                      Configuration::defaultValueSensitiveTrackedParameters());
    EXPECT_EQ(configuration.trackedParameterNames(), Configuration::defaultTrackedParameterNames());
    EXPECT_EQ(configuration.trackedParameterPrefixes(), Configuration::defaultTrackedParameterPrefixes());
    EXPECT_EQ(configuration.valueSensitiveTrackedParameters(),
              Configuration::defaultValueSensitiveTrackedParameters());
}

} // namespace
} // namespace velmora
