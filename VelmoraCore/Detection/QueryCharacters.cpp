#include <VelmoraCore/Detection/QueryCharacters.h>
#include <VelmoraCore/Detection/WrittenCharacter.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/Scripts.h>

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <array>

namespace velmora {

namespace {

// Letters of no script of their own are signs beside letters: apostrophes, superscripts. The mark that
// lengthens a vowel of Kana is the exception.
bool isSign(UScriptCode script, char32_t point)
{
    return script == USCRIPT_COMMON && !isOfScriptWithoutBlanks(point);
}

LinkCharacter properties(char32_t point)
{
    LinkCharacter result;
    result.term = linkTerm(point);
    if (point > 0x10FFFF)
        return result;
    const auto character = static_cast<UChar32>(point);
    const uint32_t category = U_GET_GC_MASK(character);
    UErrorCode error = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(character, &error);
    const bool isNumber = (category & (U_GC_ND_MASK | U_GC_NL_MASK)) != 0;
    const bool isLetter = (category & U_GC_L_MASK) != 0 && !isSign(script, point);
    const bool isMark = (category & U_GC_M_MASK) != 0;
    result.endsQuery = !isNumber && (U_FAILURE(error) || !(isLetter || isMark));
    result.endsAscii = result.endsQuery || (!isNumber && isOfScriptWithoutBlanks(point));
    result.mayEndAscii = script != USCRIPT_LATIN && script != USCRIPT_INHERITED && script != USCRIPT_COMMON;
    return result;
}

} // namespace

LinkCharacter linkCharacter(char32_t point)
{
    struct Answer {
        char32_t point = 0; // Which is ASCII.
        LinkCharacter properties;
    };

    thread_local std::array<Answer, 256> answers;
    Answer &answer = answers[point % answers.size()];
    if (answer.point != point)
        answer = {point, properties(point)};
    return answer.properties;
}

bool continuesQuery(char32_t point, bool beganInAscii)
{
    constexpr std::string_view signs = "&=%/?#+-_.~@$";
    if (point == unknownCharacter)
        return true;
    if (point >= 0x80)
        return !(beganInAscii ? linkCharacter(point).endsAscii : linkCharacter(point).endsQuery);
    const char c = static_cast<char>(point);
    return characters::is(c, characters::letter | characters::digit) ||
           signs.find(c) != std::string_view::npos;
}

} // namespace velmora
