#include <VelmoraCore/UrlComponents.h>

#include <gtest/gtest.h>

namespace velmora {
namespace {

UrlComponents parsed(std::string_view url)
{
    const auto components = UrlComponents::parse(url);
    EXPECT_TRUE(components.has_value()) << url;
    return components.value_or(UrlComponents());
}

TEST(UrlComponents, CutsAUrlAtItsDelimiters)
{
    const UrlComponents url = parsed("HTTPS://u:p%40:q@E.com:0443/a%2fB/../c;d?x=1?&y#f#g");
    EXPECT_EQ(url.scheme, "HTTPS");
    EXPECT_EQ(url.user, "u");
    EXPECT_EQ(url.password, "p%40:q");
    EXPECT_EQ(url.host, "E.com");
    EXPECT_EQ(url.port, "0443");
    EXPECT_EQ(url.path, "/a%2fB/../c;d");
    EXPECT_EQ(url.query, "x=1?&y");
    EXPECT_EQ(url.fragment, "f#g");
}

TEST(UrlComponents, TellsAbsentPiecesFromEmptyOnes)
{
    EXPECT_EQ(parsed("http://e.com").query, std::nullopt);
    EXPECT_EQ(parsed("http://e.com?").query, "");
    EXPECT_EQ(parsed("http://e.com#").fragment, "");
    EXPECT_EQ(parsed("http://e.com#").query, std::nullopt);
    EXPECT_EQ(parsed("http://e.com:").port, "");
    EXPECT_EQ(parsed("http:///p").host, "");
    EXPECT_EQ(parsed("http:p").host, std::nullopt);
    EXPECT_EQ(parsed("http://@e.com").user, "");
    EXPECT_EQ(parsed("http://@e.com").password, std::nullopt);
    EXPECT_EQ(parsed("http://:@e.com").password, "");
    EXPECT_EQ(parsed(""), UrlComponents());
}

TEST(UrlComponents, TakesTheUserUpToTheLastAtSign)
{
    EXPECT_EQ(parsed("http://a@b@c/").host, "c");
    EXPECT_EQ(parsed("http://a@b@c/").user, "a@b");
}

TEST(UrlComponents, KeepsTheBracketsOfALiteralHost)
{
    EXPECT_EQ(parsed("http://[::1]:8/").host, "[::1]");
    EXPECT_EQ(parsed("http://[fe80::1%25eth0]").host, "[fe80::1%25eth0]");
    EXPECT_EQ(parsed("http://[v1.a]?q").query, "q");
}

TEST(UrlComponents, ReadsAPathThatHasNoScheme)
{
    EXPECT_EQ(parsed("e.com/x").path, "e.com/x");
    EXPECT_EQ(parsed("/a:b").path, "/a:b");
    EXPECT_EQ(parsed("?a:b").query, "a:b");
    EXPECT_EQ(parsed("//e.com/x").host, "e.com");
}

TEST(UrlComponents, RefusesWhatIsNoUrl)
{
    for (const char *text :
         {"1ab:c", ":x", "a b:c", "http://[::1", "http://[::1]x", "http://[::1]:x", "http://[a|]/",
          "http://e.com:abc", "http://e.com:8:9", "http://a b/", "http://a|b/", "http://a\"b/"})
        EXPECT_FALSE(UrlComponents::parse(text)) << text;
}

} // namespace
} // namespace velmora
