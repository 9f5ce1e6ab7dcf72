#include <VelmoraCore/Text/CharacterProperties.h>
#include <VelmoraCore/Text/CharacterTables.h>

#include <algorithm>
#include <cstddef>

namespace velmora {

namespace {

constexpr std::size_t pageSize = 128;
constexpr char32_t lastCodePoint = 0x10FFFF; // Unassigned, for good.

} // namespace

const CharacterProperties &propertiesOf(char32_t point)
{
    const std::size_t known = std::min(point, lastCodePoint);
    const std::size_t page = tables::characterPages[known / pageSize];
    return tables::characterRecords[tables::characterNumbers[page * pageSize + known % pageSize]];
}

char32_t lowerCase(char32_t point)
{
    if (!propertiesOf(point).hasLowerCase)
        return point;
    const auto isBefore = [](const tables::LowerCase &entry, char32_t value) { return entry.point < value; };
    return std::lower_bound(tables::lowerCases.begin(), tables::lowerCases.end(), point, isBefore)->lower;
}

} // namespace velmora
