#include <VelmoraCore/Hosts/HostLabels.h>
#include <VelmoraCore/Hosts/InternationalName.h>
#include <VelmoraCore/Hosts/TopLevelDomains.h>
#include <VelmoraCore/Text/CharacterProperties.h>
#include <VelmoraCore/Text/Utf8.h>
#include <VelmoraCore/Unicode.h>

#include <gtest/gtest.h>
#include <libpsl.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/uidna.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <array>
#include <ios>
#include <memory>
#include <optional>
#include <random>
#include <utility>

// The engine's tables and rules have to give the answers of ICU, for every character. Another version of Unicode knows
// other characters, and has other properties for some of the same.
namespace velmora {
namespace {

template<typename Visit>
void forEveryCharacter(Visit visit)
{
    for (UChar32 point = 0; point <= 0x10FFFF; ++point) {
        if (!U_IS_SURROGATE(static_cast<char32_t>(point)))
            visit(point);
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "at U+" << std::hex << point;
            return;
        }
    }
}

CharacterCategory category(UChar32 point)
{
    using enum CharacterCategory;
    const uint32_t mask = U_GET_GC_MASK(point);
    if ((mask & U_GC_L_MASK) != 0)
        return letter;
    if ((mask & U_GC_M_MASK) != 0)
        return mark;
    if ((mask & (U_GC_ND_MASK | U_GC_NL_MASK)) != 0)
        return number;
    if ((mask & U_GC_NO_MASK) != 0)
        return otherNumber;
    return (mask & (U_GC_SO_MASK | U_GC_SM_MASK)) != 0 ? symbol : other;
}

ScriptGroup script(UChar32 point)
{
    UErrorCode error = U_ZERO_ERROR;
    switch (uscript_getScript(point, &error)) {
    case USCRIPT_LATIN:
        return ScriptGroup::latin;
    case USCRIPT_COMMON:
        return ScriptGroup::common;
    case USCRIPT_INHERITED:
        return ScriptGroup::inherited;
    case USCRIPT_HAN:
    case USCRIPT_HIRAGANA:
    case USCRIPT_KATAKANA:
    case USCRIPT_BOPOMOFO:
    case USCRIPT_HANGUL:
    case USCRIPT_THAI:
    case USCRIPT_LAO:
    case USCRIPT_KHMER:
    case USCRIPT_MYANMAR:
    case USCRIPT_TIBETAN:
        return ScriptGroup::withoutBlanks;
    default:
        return ScriptGroup::other;
    }
}

ClusterBreak clusterBreak(UChar32 point)
{
    using enum ClusterBreak;
    switch (u_getIntPropertyValue(point, UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_CONTROL:
        return control;
    case U_GCB_CR:
        return carriageReturn;
    case U_GCB_LF:
        return lineFeed;
    case U_GCB_EXTEND:
        return extend;
    case U_GCB_ZWJ:
        return joiner;
    case U_GCB_SPACING_MARK:
        return spacingMark;
    case U_GCB_PREPEND:
        return prepend;
    case U_GCB_REGIONAL_INDICATOR:
        return regionalIndicator;
    case U_GCB_L:
        return leading;
    case U_GCB_V:
        return vowel;
    case U_GCB_T:
        return trailing;
    case U_GCB_LV:
        return syllableWithoutTrailing;
    case U_GCB_LVT:
        return syllable;
    default:
        return ClusterBreak::other;
    }
}

std::string utf8Of(const icu::UnicodeString &text)
{
    std::string result;
    return text.toUTF8String(result);
}

// Of ICU; nothing if the name is not valid.
std::optional<std::string> icuAsciiName(std::string_view name)
{
    UErrorCode error = U_ZERO_ERROR;
    static const std::unique_ptr<UIDNA, decltype(&uidna_close)> rules(
        uidna_openUTS46(UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ | UIDNA_NONTRANSITIONAL_TO_ASCII, &error),
        uidna_close);
    UIDNAInfo info = UIDNA_INFO_INITIALIZER;
    std::array<char, 4096> spelling{};
    const int32_t length =
        uidna_nameToASCII_UTF8(rules.get(), name.data(), static_cast<int32_t>(name.size()), spelling.data(),
                               static_cast<int32_t>(spelling.size()), &info, &error);
    if (U_FAILURE(error) || info.errors != 0)
        return std::nullopt;
    return std::string(spelling.data(), static_cast<std::size_t>(length));
}

// Texts of characters that do something to their neighbours, the same ones in every run.
class RandomTexts {
public:
    explicit RandomTexts(icu::UnicodeString alphabet)
        : alphabet_(std::move(alphabet))
    {
    }

    std::string next()
    {
        icu::UnicodeString text;
        const auto length = static_cast<int>(numbers_() % 9) + 1;
        for (int i = 0; i < length; ++i) {
            const auto at = static_cast<int32_t>(numbers_() % static_cast<unsigned>(alphabet_.countChar32()));
            text.append(alphabet_.char32At(alphabet_.moveIndex32(0, at)));
        }
        return utf8Of(text);
    }

private:
    icu::UnicodeString alphabet_;
    std::mt19937 numbers_{1};
};

class UnicodeAgainstIcu : public testing::Test {
protected:
    void SetUp() override
    {
        constexpr int versionOfTables = 15; // 15.0, as ICU 72 has it.
        UVersionInfo version{};
        u_getUnicodeVersion(version);
        if (version[0] != versionOfTables || version[1] != 0)
            GTEST_SKIP() << "The tables are those of Unicode 15.0; this ICU has another.";
    }
};

TEST_F(UnicodeAgainstIcu, KnowsTheSamePropertiesOfEveryCharacter)
{
    forEveryCharacter([](UChar32 point) {
        const CharacterProperties &character = propertiesOf(static_cast<char32_t>(point));
        ASSERT_EQ(character.category, category(point));
        ASSERT_EQ(character.script, script(point));
        ASSERT_EQ(character.clusterBreak, clusterBreak(point));
        ASSERT_EQ(character.combiningClass, u_getCombiningClass(point));
        ASSERT_EQ(character.isPictographic, u_hasBinaryProperty(point, UCHAR_EXTENDED_PICTOGRAPHIC) != 0);
        ASSERT_EQ(lowerCase(static_cast<char32_t>(point)), static_cast<char32_t>(u_tolower(point)));
    });
}

TEST_F(UnicodeAgainstIcu, LowersEveryCharacterTheSame)
{
    forEveryCharacter([](UChar32 point) {
        if (point == 0x130) // Becomes two.
            return;
        ASSERT_EQ(lowercased(utf8Of(icu::UnicodeString(point))),
                  utf8Of(icu::UnicodeString(u_tolower(point))));
    });
}

void expectSameForm(const std::string &text)
{
    UErrorCode error = U_ZERO_ERROR;
    static const icu::Normalizer2 *const composer = icu::Normalizer2::getNFCInstance(error);
    ASSERT_EQ(canonicalForm(text), utf8Of(composer->normalize(icu::UnicodeString::fromUTF8(text), error)))
        << text;
}

TEST_F(UnicodeAgainstIcu, ComposesEveryCharacterTheSame)
{
    forEveryCharacter([](UChar32 point) {
        for (const char *base :
             {"", "e", "e\u0301", "e\u0323", "か", "가", "\u1100", "И", "\u0928", "\u09C7"}) {
            expectSameForm(utf8Of(icu::UnicodeString::fromUTF8(base).append(point)));
            expectSameForm(utf8Of(icu::UnicodeString::fromUTF8(base).append(point).append(u'\u0301')));
        }
    });
}

TEST_F(UnicodeAgainstIcu, ComposesRowsOfMarksTheSame)
{
    RandomTexts texts(
        icu::UnicodeString::fromUTF8("eoAΩας\u0301\u0300\u0323\u0327\u0338\u0345\u0308\u093C\u0928\u09C7"
                                     "\u09BE\u09D7\u1100\u1161\u11A8가각\u0F71\u0F72"
                                     "\u0F74\u0344\u212B\u1E9B\U0001D157\U0001D165\u3099か\u05B0\u05BC\uFB1D"
                                     "\u0CC6\u0CC2\u0CD5\U000110A5\U000110BA"));
    for (int i = 0; i < 200'000 && !HasFatalFailure(); ++i)
        expectSameForm(texts.next());
}

void expectSameName(const std::string &name)
{
    ASSERT_EQ(asciiName(name), icuAsciiName(name)) << name;
}

TEST_F(UnicodeAgainstIcu, SpellsEveryCharacterInADomainNameTheSame)
{
    forEveryCharacter([](UChar32 point) {
        const std::string character = utf8Of(icu::UnicodeString(point));
        for (const auto &[before, after] :
             {std::pair("", ""), std::pair("a", ""), std::pair("", "b"), std::pair("a", "ß"),
              std::pair("א", ""), std::pair("ب", "ب"), std::pair("漢", "字"), std::pair("क\u094D", ""),
              std::pair("ü.", ".b"), std::pair("א.", "")})
            expectSameName(before + character + after);
    });
}

TEST_F(UnicodeAgainstIcu, SpellsNamesInTroubleTheSame)
{
    RandomTexts texts(icu::UnicodeString::fromUTF8(
        "aZ0-..ßüא1٠با\u200D\u200C\u0301क\u094Dل\u064B\u00AD。✪🙂Å\u0308ſ℻_ܐ"));
    for (int i = 0; i < 300'000 && !HasFatalFailure(); ++i)
        expectSameName("ü" + texts.next());
    for (const char *name : {"xn--bcher-kva.ü",
                             "xn--bcher-kvä.de",
                             "XN--BCHER-KVA.ü",
                             "xn--.ü",
                             "xn--0.ü",
                             "xn--zzzzzzzz.ü",
                             "xn--a.ü",
                             "xn--a-ecp.ü",
                             "xn--kmbx.ü",
                             "xn--99999999999.ü",
                             "xn--a-.-ü",
                             "ü.xn--a-\xFF",
                             "\xFF",
                             "a--b.ü",
                             "ab--c.ü",
                             "-a.ü",
                             "a-.ü",
                             "ü..a",
                             ".ü",
                             "ü.",
                             "ü。",
                             "ü..",
                             "xn--ß.de",
                             "xn--iny-zx5a.ü"})
        expectSameName(name);
    for (std::size_t length = 50; length < 66; ++length) {
        expectSameName("ü." + std::string(length, 'a'));
        expectSameName("ü" + std::string(length, 'a'));
        std::string name = "ü";
        for (int i = 0; i < 5; ++i)
            name += "." + std::string(length, 'a');
        expectSameName(name);
        expectSameName(name + ".");
    }
}

TEST_F(UnicodeAgainstIcu, ReadsSpellingsTheSame)
{
    std::mt19937 numbers(2);
    for (int i = 0; i < 300'000 && !HasFatalFailure(); ++i) {
        constexpr std::string_view alphabet = "abkmz0189-";
        std::string label = "xn--";
        for (auto left = numbers() % 9; left > 0; --left)
            label.push_back(alphabet[numbers() % alphabet.size()]);
        expectSameName("ü." + label);
    }
}

// The fillers of Hangul and the like, which folding takes away although no name may have them.
bool isDisallowedInNames(const std::string &character)
{
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2 *mapping = icu::Normalizer2::getInstance(nullptr, "uts46", UNORM2_COMPOSE, error);
    return mapping->normalize(icu::UnicodeString::fromUTF8(character), error).indexOf(char16_t{0xFFFD}) >= 0;
}

TEST_F(UnicodeAgainstIcu, KnowsTheSameTopLevelDomainsInEverySpelling)
{
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2 *folding = icu::Normalizer2::getNFKCCasefoldInstance(error);
    const auto isListed = [&](const std::string &label) {
        const std::string folded = utf8Of(folding->normalize(icu::UnicodeString::fromUTF8(label), error));
        return psl_is_public_suffix2(psl_builtin(), folded.c_str(), PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE) !=
               0;
    };
    forEveryCharacter([&](UChar32 point) {
        if (point < 0x80 || !isHostCodePoint(static_cast<char32_t>(point)))
            return;
        const std::string character = utf8Of(icu::UnicodeString(point));
        for (const auto &[before, after] :
             {std::pair("", ""), std::pair("c", "m"), std::pair("co", "m"), std::pair("", "i"),
              std::pair("i", "o"), std::pair("д", "ти"), std::pair("中", ""), std::pair("ا", "ردن"),
              std::pair("भार", "त"), std::pair("ne", "s")}) {
            const std::string label = before + character + after;
            ASSERT_EQ(isTopLevelDomain(label), isListed(label) && !isDisallowedInNames(character)) << label;
        }
    });
}

} // namespace
} // namespace velmora
