#include <VelmoraCore/Text/CharacterProperties.h>
#include <VelmoraCore/Text/CharacterTables.h>

#include <algorithm>

namespace velmora {

char32_t lowerCase(char32_t point)
{
    if (!propertiesOf(point).hasLowerCase)
        return point;
    const auto isBefore = [](const tables::LowerCase &entry, char32_t value) { return entry.point < value; };
    return std::lower_bound(tables::lowerCases.begin(), tables::lowerCases.end(), point, isBefore)->lower;
}

} // namespace velmora
