#include <VelmoraCore/Hosts/HostName.h>

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(ReportedHost, KeepsAnAsciiNameAsWritten)
{
    EXPECT_EQ(reportedHost("EXAMPLE.com."), "EXAMPLE.com.");
    EXPECT_EQ(reportedHost("xn--bcher-kva.de"), "xn--bcher-kva.de");
    EXPECT_EQ(reportedHost(""), "");
}

TEST(ReportedHost, GivesTheAsciiSpellingOfAnInternationalisedName)
{
    EXPECT_EQ(reportedHost("bücher.de"), "xn--bcher-kva.de");
    EXPECT_EQ(reportedHost("BÜCHER.DE"), "xn--bcher-kva.de");
    EXPECT_EQ(reportedHost("faß.de"), "xn--fa-hia.de");
    EXPECT_EQ(reportedHost("ｅ。com"), "e.com");
}

TEST(ReportedHost, DecodesEscapesAndDropsTheBracketsOfALiteral)
{
    EXPECT_EQ(reportedHost("a%62c.de"), "abc.de");
    EXPECT_EQ(reportedHost("b%C3%BCcher.de"), "xn--bcher-kva.de");
    EXPECT_EQ(reportedHost("[2001:DB8::1]"), "2001:DB8::1");
}

TEST(ReportedHost, LowersANameThatHasNoAsciiSpelling)
{
    EXPECT_EQ(reportedHost("Ä\u202E\u202C.de"), "ä\u202E\u202C.de");
    EXPECT_EQ(reportedHost(std::string(3000, 'A').append("Ä")), std::string(3000, 'a').append("ä"));
}

TEST(ComparableHost, IsOneForAllSpellingsOfAHost)
{
    for (const char *spelling :
         {"bücher.de", "BÜCHER.de.", "xn--bcher-kva.de", "XN--BCHER-KVA.DE", " .bu\u0308cher.de. "})
        EXPECT_EQ(comparableHost(spelling), "xn--bcher-kva.de") << spelling;
    EXPECT_EQ(comparableHost("[::A]"), "::a");
    EXPECT_EQ(comparableHost("::A"), "::a");
    EXPECT_EQ(comparableHost(" ... "), "");
}

TEST(IsWithinDomain, TakesTheDomainAndItsSubDomains)
{
    EXPECT_TRUE(isWithinDomain("e.com", "e.com"));
    EXPECT_TRUE(isWithinDomain("a.b.e.com", "e.com"));
    EXPECT_FALSE(isWithinDomain("note.com", "e.com"));
    EXPECT_FALSE(isWithinDomain("com", "e.com"));
    EXPECT_FALSE(isWithinDomain("e.com", ""));
}

} // namespace
} // namespace velmora
