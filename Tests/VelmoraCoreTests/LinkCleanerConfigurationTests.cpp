#include <VelmoraCore/LinkCleanerConfiguration.h>

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>

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

// The lists of the independent listing, by their names.
std::map<std::string, Strings> listing()
{
    std::map<std::string, Strings> lists;
    std::ifstream file(VELMORA_TEST_DATA "/TrackingRules.txt");
    std::string name;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        if (line[0] != ' ') {
            name = line;
            continue;
        }
        std::istringstream entries(line);
        for (std::string entry; entries >> entry;)
            EXPECT_TRUE(lists[name].insert(entry).second) << entry << " is listed twice";
    }
    return lists;
}

void expectAll(const Strings &listed, const Strings &table)
{
    EXPECT_FALSE(listed.empty());
    for (const std::string &entry : listed)
        EXPECT_TRUE(table.contains(entry)) << entry << " is missing";
}

TEST(LinkCleanerConfiguration, HasEveryListedRuleInItsDefaultTables)
{
    auto lists = listing();
    expectAll(lists["names"], Configuration::defaultTrackedParameterNames());
    expectAll(lists["prefixes"], Configuration::defaultTrackedParameterPrefixes());
    const ValueTable &values = Configuration::defaultValueSensitiveTrackedParameters();
    EXPECT_EQ(values.size(), 2U);
    expectAll(lists["values of source"], values.at("source"));
    expectAll(lists["values of src"], values.at("src"));
}

TEST(LinkCleanerConfiguration, NeverTracksWhatPagesNeed)
{
    const Strings needed = listing()["never removed"];
    EXPECT_FALSE(needed.empty());
    for (const std::string &name : needed) {
        EXPECT_FALSE(Configuration::defaultTrackedParameterNames().contains(name)) << name;
        for (const std::string &prefix : Configuration::defaultTrackedParameterPrefixes())
            EXPECT_FALSE(name.starts_with(prefix)) << name << " begins with " << prefix;
    }
}

TEST(LinkCleanerConfiguration, TellsOnlySomeValuesOfASourceApart)
{
    const ValueTable &values = Configuration::defaultValueSensitiveTrackedParameters();
    EXPECT_FALSE(values.at("source").contains("rss"));
    EXPECT_FALSE(values.at("src").contains("ig"));
}

TEST(LinkCleanerConfiguration, HasOneConfigurationOfTheDefaultTables)
{
    const Configuration configuration = Configuration::withDefaultRules({"A.com."});
    EXPECT_EQ(configuration.ignoredHosts(), Strings{"a.com"});
    EXPECT_EQ(configuration.trackedParameterNames(), Configuration::defaultTrackedParameterNames());
    EXPECT_EQ(configuration.trackedParameterPrefixes(), Configuration::defaultTrackedParameterPrefixes());
    EXPECT_EQ(configuration.valueSensitiveTrackedParameters(),
              Configuration::defaultValueSensitiveTrackedParameters());
    EXPECT_TRUE(Configuration::withDefaultRules().ignoredHosts().empty());
}

} // namespace
} // namespace velmora
