#include <VelmoraCore/Detection/QueryCharacters.h>
#include <VelmoraCore/Detection/WrittenCharacter.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/Scripts.h>

#include <unicode/uchar.h>
#include <unicode/uscript.h>

namespace velmora {

namespace {

// Letters of no script of their own are signs beside letters: apostrophes, superscripts. The mark that
// lengthens a vowel of Kana is the exception.
bool isSign(UScriptCode script, char32_t point)
{
    return script == USCRIPT_COMMON && !isOfScriptWithoutBlanks(point);
}

} // namespace

bool endsQuery(char32_t point, bool beganInAscii)
{
    if (point > 0x10FFFF)
        return true;
    const auto character = static_cast<UChar32>(point);
    const uint32_t category = U_GET_GC_MASK(character);
    if ((category & (U_GC_ND_MASK | U_GC_NL_MASK)) != 0)
        return false;
    if ((category & (U_GC_L_MASK | U_GC_M_MASK)) == 0)
        return true;
    UErrorCode error = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(character, &error);
    if (U_FAILURE(error))
        return true;
    if ((category & U_GC_L_MASK) != 0 && isSign(script, point))
        return true;
    return beganInAscii && isOfScriptWithoutBlanks(point);
}

bool mayEndQuery(char32_t point, bool beganInAscii)
{
    if (!beganInAscii)
        return false;
    UErrorCode error = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(static_cast<UChar32>(point), &error);
    return script != USCRIPT_LATIN && script != USCRIPT_INHERITED && script != USCRIPT_COMMON;
}

bool continuesQuery(char32_t point, bool beganInAscii)
{
    constexpr std::string_view signs = "&=%/?#+-_.~@$";
    if (point == unknownCharacter)
        return true;
    if (point >= 0x80)
        return !endsQuery(point, beganInAscii);
    const char c = static_cast<char>(point);
    return characters::is(c, characters::letter | characters::digit) ||
           signs.find(c) != std::string_view::npos;
}

} // namespace velmora
