#include <VelmoraCore/Detection/QueryCharacters.h>
#include <VelmoraCore/Detection/WrittenCharacter.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/CharacterProperties.h>
#include <VelmoraCore/Text/Scripts.h>

#include <array>

namespace velmora {

namespace {

// Letters of no script of their own are signs beside letters: apostrophes, superscripts. The mark that
// lengthens a vowel of Kana is the exception.
bool isSign(ScriptGroup script, char32_t point)
{
    return script == ScriptGroup::common && !isOfScriptWithoutBlanks(point);
}

// Latin letters as wide as ideographs, which stand in prose without blanks.
bool isOfFullWidth(char32_t point)
{
    return (point >= 0xFF21 && point <= 0xFF3A) || (point >= 0xFF41 && point <= 0xFF5A);
}

LinkCharacter properties(char32_t point)
{
    using enum CharacterCategory;
    LinkCharacter result;
    result.term = linkTerm(point);
    if (point > 0x10FFFF)
        return result;
    const CharacterProperties &character = propertiesOf(point);
    const ScriptGroup script = character.script;
    const bool isNumber = character.category == number;
    const bool isLetter = character.category == letter && !isSign(script, point);
    result.endsQuery = !isNumber && !isLetter && character.category != mark;
    result.endsAscii =
        result.endsQuery || (!isNumber && (isOfScriptWithoutBlanks(point) || isOfFullWidth(point)));
    result.mayEndAscii =
        script != ScriptGroup::latin && script != ScriptGroup::inherited && script != ScriptGroup::common;
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
