#include <VelmoraCore/Hosts/Punycode.h>

#include <gtest/gtest.h>

namespace velmora {
namespace {

struct Row {
    std::u32string label;
    std::string spelling;
};

std::u32string wide(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}

// The labels in other scripts are samples of RFC 3492, section 7.1.
TEST(Punycode, SpellsAndReadsSamples)
{
    const std::vector<Row> rows = {
        {U"bücher", "bcher-kva"},
        {U"ü", "tda"},
        {U"abc", "abc-"},
        {U"", ""},
        {U"a-ü-b", "a--b-1ra"},
        {U"他们为什么不说中文", "ihqwcrb4cv8a8dqg056pqjye"},
        {U"למההםפשוטלאמדבריםעברית", "4dbcagdahymbxekheh6e0a7fei0b"},
        {U"почемужеонинеговорятпорусски", "b1abfaaepdrnnbgefbadotcwatmq2g4l"},
        {U"ひとつ屋根の下2", "2-u9tlzr9756bt3uc0v"},
        {U"そのスピードで", "d9juau41awczczp"},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(punycode::encoded(row.label), row.spelling);
        EXPECT_EQ(punycode::decoded(wide(row.spelling)), row.label);
    }
}

TEST(Punycode, RefusesWhatIsNoSpelling)
{
    for (const char *bad : {"k", "99999999", "9999999999999999999999999999", "a-!", "ab c", "0000"})
        EXPECT_EQ(punycode::decoded(wide(bad)), std::nullopt) << bad;
    EXPECT_EQ(punycode::decoded(U"ü-kva"), std::nullopt);
    EXPECT_EQ(punycode::decoded(U"bcher-kvä"), std::nullopt);
}

} // namespace
} // namespace velmora
