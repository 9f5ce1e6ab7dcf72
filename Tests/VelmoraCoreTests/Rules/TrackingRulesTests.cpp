#include <VelmoraCore/Rules/TrackingRules.h>
#include <VelmoraCore/Text/Utf8.h>

#include <gtest/gtest.h>

#include <string>

namespace velmora {
namespace {

TrackingRules rulesFor(const LinkCleanerConfiguration::Strings &names)
{
    return TrackingRules(LinkCleanerConfiguration({}, names, {"pre", "k"}, {}));
}

// Names in ASCII alone let the rules tell by its first character that a name is none of them.
TEST(TrackingRules, DecideOnNamesOutsideAsciiAlikeWhateverOtherNamesThereAre)
{
    const TrackingRules ascii = rulesFor({"a", "i\u0307", "`", ";", "prefer"});
    const TrackingRules mixed = rulesFor({"a", "i\u0307", "`", ";", "prefer", "\u0436\u0436\u0436"});
    const LinkHost host("e.com");
    unsigned removed = 0;
    for (char32_t point = 0x80; point <= 0x10FFFF; ++point) {
        if (point >= 0xD800 && point <= 0xDFFF)
            continue;
        for (const char *tail : {"", "\u0301", "\u0338", "a", "prefix", "\xFF"}) {
            const std::string name = utf8::encoded(std::u32string(1, point)) + tail;
            const bool isRemoved = mixed.removes({name}, host);
            ASSERT_EQ(ascii.removes({name}, host), isRemoved) << static_cast<unsigned>(point) << ' ' << name;
            removed += isRemoved ? 1 : 0;
        }
    }
    // A no-break space before "a", signs and letters that are another spelling of ASCII, "pre" behind a blank.
    EXPECT_GT(removed, 20U);
}

TEST(TrackingRules, TakeANameThatIsNotUtf8ForTheEmptyOne)
{
    const LinkHost host("e.com");
    EXPECT_TRUE(rulesFor({""}).removes({"\u6F22\xFF"}, host));
    EXPECT_TRUE(rulesFor({""}).removes({"\xFF"}, host));
    EXPECT_FALSE(rulesFor({"a"}).removes({"\u6F22\xFF"}, host));
}

} // namespace
} // namespace velmora
