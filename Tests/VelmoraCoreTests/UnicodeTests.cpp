#include <VelmoraCore/Text/Utf8.h>
#include <VelmoraCore/Unicode.h>

#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace std::string_view_literals;

TEST(Lowercased, MapsEveryCodePointOnItsOwn)
{
    EXPECT_EQ(lowercased("AbC-09_Z"), "abc-09_z");
    EXPECT_EQ(lowercased("ÄÖÜ ÉÇ"), "äöü éç");
    EXPECT_EQ(lowercased("ПРИВЕТ"), "привет");
    EXPECT_EQ(lowercased("ΟΔΟΣ"), "οδοσ");
    EXPECT_EQ(lowercased("\u1E9E"), "ß");
    EXPECT_EQ(lowercased("\u0130I"), "i\u0307i");
    EXPECT_EQ(lowercased("\u212A\u212B"), "kå");
    EXPECT_EQ(lowercased("\u01C5"), "\u01C6");
    EXPECT_EQ(lowercased("a\u2167\u1EA0Z漢\u1C90"), "a\u2177\u1EA1z漢\u10D0");
    EXPECT_EQ(lowercased("\U00010400"), "\U00010428");
    EXPECT_EQ(lowercased("ﬀß漢字🙂"), "ﬀß漢字🙂");
}

TEST(Lowercased, LeavesIllFormedBytesAndNulAlone)
{
    EXPECT_EQ(lowercased("A\xFF"
                         "B\xC3"sv),
              "a\xFF"
              "b\xC3"sv);
    EXPECT_EQ(lowercased("A\0B"sv), "a\0b"sv);
}

TEST(TrimmedWhitespace, TakesBlanksOffBothEnds)
{
    EXPECT_EQ(trimmedWhitespace(" \t a b \u00A0\u200B\u3000\u2003"), "a b");
    EXPECT_EQ(trimmedWhitespace("\na\n"), "\na\n");
    EXPECT_EQ(trimmedWhitespace("  "), "");
    EXPECT_EQ(trimmedWhitespace(""), "");
}

TEST(TrimmedWhitespaceAndNewlines, TakesLineBreaksToo)
{
    EXPECT_EQ(trimmedWhitespaceAndNewlines("\r\n\v\f\u0085\u2028 a\nb \u2029\n"), "a\nb");
    EXPECT_EQ(trimmedWhitespaceAndNewlines("\u1680\u202F\u205Fx"), "x");
}

TEST(TrimmedWhitespaceAndNewlines, LeavesInvisibleCharactersThatAreNoBlanks)
{
    for (const std::string_view kept : {"\u180E", "\u200C", "\u200D", "\u2060", "\uFEFF", "\u00AD", "\x01"})
        EXPECT_EQ(trimmedWhitespaceAndNewlines(kept), kept);
}

TEST(TrimmedWhitespaceAndNewlines, TakesABlankThatCarriesACombiningMark)
{
    EXPECT_EQ(trimmedWhitespaceAndNewlines(" \u0301a"), "\u0301a");
}

TEST(CanonicalForm, IsOneForEquivalentTexts)
{
    EXPECT_EQ(canonicalForm("e\u0301"), canonicalForm("\u00E9"));
    EXPECT_EQ(canonicalForm("\u212A\u212B"), "K\u00C5");
    EXPECT_EQ(canonicalForm("a\u0323\u0307"), canonicalForm("a\u0307\u0323"));
    EXPECT_EQ(canonicalForm("\uFB01"), "\uFB01"); // Compatible, not equivalent.
}

TEST(CanonicalForm, LeavesMoreMarksInARowThanAnyWritingHas)
{
    std::string marks = "e";
    for (int i = 0; i < 16; ++i)
        marks += "\u0301\u0323";
    EXPECT_EQ(canonicalForm(marks), marks);
    EXPECT_NE(canonicalForm(marks.substr(0, 1 + 4 * 14)), marks.substr(0, 1 + 4 * 14));
    EXPECT_EQ(canonicalForm("漢字é\xFF"), "漢字é\xFF");
}

bool isPrefix(std::string_view text, std::string_view prefix)
{
    return text.starts_with(prefix) && isCharacterBoundary(text, prefix.size());
}

TEST(IsCharacterBoundary, TellsWholeCharactersFromParts)
{
    EXPECT_TRUE(isCharacterBoundary("", 0));
    EXPECT_TRUE(isPrefix("\u0301x", ""));
    EXPECT_FALSE(isPrefix("x🇩🇪", "x🇩"));
    EXPECT_TRUE(isPrefix("🇩🇪🇫🇷", "🇩🇪"));
    EXPECT_FALSE(isPrefix("🇩🇪🇫🇷", "🇩🇪🇫"));
    EXPECT_FALSE(isPrefix("\u1100\u1100", "\u1100"));
    EXPECT_FALSE(isPrefix("\u1100가", "\u1100"));
    EXPECT_FALSE(isPrefix("\u1100각", "\u1100"));
    EXPECT_FALSE(isPrefix("\u1161\u1161", "\u1161"));
    EXPECT_TRUE(isPrefix("\u1161\u1100", "\u1161"));
    EXPECT_FALSE(isPrefix("\u11A8\u11A8", "\u11A8"));
    EXPECT_TRUE(isPrefix("\u11A8\u1161", "\u11A8"));
    EXPECT_TRUE(isPrefix("\r\u0301", "\r"));
    EXPECT_TRUE(isPrefix("é\n", "é"));
    EXPECT_TRUE(isPrefix("\u200Dx", "\u200D"));
    EXPECT_TRUE(isPrefix("\xFFx"sv, "\xFF"sv));
    EXPECT_FALSE(isPrefix("\u0928\u093F", "\u0928"));
    EXPECT_TRUE(isPrefix("utm_source", "utm_"));
    EXPECT_TRUE(isPrefix("utm_", "utm_"));
    EXPECT_TRUE(isPrefix("x", ""));
    EXPECT_FALSE(isPrefix("utm", "utm_"));
    EXPECT_TRUE(isPrefix("utm_é", "utm_"));
    EXPECT_TRUE(isPrefix("utm_漢", "utm_"));
    EXPECT_FALSE(isPrefix("utm_\u0301x", "utm_"));
    EXPECT_FALSE(isPrefix("utm_\u200Dx", "utm_"));
    EXPECT_FALSE(isPrefix("\r\nx", "\r"));
    EXPECT_TRUE(isPrefix("\n\u0301", "\n"));
    EXPECT_FALSE(isPrefix("\u1100\u1161", "\u1100"));
    EXPECT_TRUE(isPrefix("가나", "가"));
    EXPECT_FALSE(isPrefix("가\u11A8", "가"));
    EXPECT_FALSE(isPrefix("각\u11A8", "각"));
    EXPECT_FALSE(isPrefix("🇩🇪x", "🇩"));
    EXPECT_TRUE(isPrefix("🇩🇪🇫🇷", "🇩🇪"));
    EXPECT_FALSE(isPrefix("\U0001F468\u200D\U0001F469", "\U0001F468\u200D"));
    EXPECT_FALSE(isPrefix("\u0600"
                          "1",
                          "\u0600"));
    EXPECT_TRUE(isPrefix("a\xFF"sv, "a"));
}

TEST(Utf8, RefusesWhatIsNotWellFormed)
{
    for (const std::string_view bad :
         {"\xC0\x80"sv, "\x80"sv, "\xE0\x80\x80"sv, "\xED\xA0\x80"sv, "\xF0\x80\x80\x80"sv,
          "\xF4\x90\x80\x80"sv, "\xF5\x80\x80\x80"sv, "\xE2\x82"sv, "\xF0\x9F\x99"sv, "\xC3"sv, "\xFF"sv}) {
        EXPECT_FALSE(utf8::isWellFormed(bad));
        EXPECT_EQ(utf8::decode(bad, 0).length, 1U);
        EXPECT_EQ(utf8::decodeBefore(bad, bad.size(), 0).value, utf8::illFormed);
    }
    EXPECT_TRUE(utf8::isWellFormed("aé漢🙂\0"sv));
}

TEST(Utf8, CountsUtf16UnitsAndIllFormedBytesAsOne)
{
    EXPECT_EQ(utf8::utf16Length("aé漢🙂"), 5U);
    EXPECT_EQ(utf8::utf16Length("\xFF\xC3("sv), 3U);
}

} // namespace
} // namespace velmora
