#include <VelmoraCore/Text/Scripts.h>

#include <unicode/uscript.h>

namespace velmora {

bool isOfScriptWithoutBlanks(char32_t point)
{
    // The marks that lengthen a vowel of Kana, which count for no script.
    constexpr char32_t longVowel = 0x30FC;
    constexpr char32_t narrowLongVowel = 0xFF70;
    UErrorCode error = U_ZERO_ERROR;
    switch (uscript_getScript(static_cast<UChar32>(point), &error)) {
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
        return true;
    default:
        return point == longVowel || point == narrowLongVowel;
    }
}

} // namespace velmora
