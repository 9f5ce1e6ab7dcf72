#include <VelmoraCore/Text/CharacterProperties.h>
#include <VelmoraCore/Text/Scripts.h>

namespace velmora {

bool isOfScriptWithoutBlanks(char32_t point)
{
    // The marks that lengthen a vowel of Kana, which count for no script.
    constexpr char32_t longVowel = 0x30FC;
    constexpr char32_t narrowLongVowel = 0xFF70;
    return propertiesOf(point).script == ScriptGroup::withoutBlanks || point == longVowel ||
           point == narrowLongVowel;
}

} // namespace velmora
