#include <VelmoraCore/Detection/WrittenCharacter.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <algorithm>
#include <array>

namespace velmora {

namespace {

struct NamedCharacter {
    std::string_view name;
    char32_t value;
};

// Names of punctuation, blanks and symbols, sorted. Letters have none here: a link with such a letter in it
// is left alone.
constexpr auto names = std::to_array<NamedCharacter>({
    {"Dagger", 0x2021}, {"NewLine", '\n'},  {"Prime", 0x2033},  {"Tab", '\t'},      {"amp", '&'},
    {"apos", '\''},     {"asymp", 0x2248},  {"bdquo", 0x201E},  {"brvbar", 0xA6},   {"bull", 0x2022},
    {"cent", 0xA2},     {"copy", 0xA9},     {"crarr", 0x21B5},  {"curren", 0xA4},   {"dagger", 0x2020},
    {"darr", 0x2193},   {"deg", 0xB0},      {"divide", 0xF7},   {"emsp", 0x2003},   {"ensp", 0x2002},
    {"equals", '='},    {"equiv", 0x2261},  {"euro", 0x20AC},   {"frac12", 0xBD},   {"frac14", 0xBC},
    {"frac34", 0xBE},   {"frasl", 0x2044},  {"ge", 0x2265},     {"grave", '`'},     {"gt", '>'},
    {"harr", 0x2194},   {"hearts", 0x2665}, {"hellip", 0x2026}, {"horbar", 0x2015}, {"iexcl", 0xA1},
    {"infin", 0x221E},  {"iquest", 0xBF},   {"laquo", 0xAB},    {"larr", 0x2190},   {"lcub", '{'},
    {"ldquo", 0x201C},  {"le", 0x2264},     {"lowbar", '_'},    {"lpar", '('},      {"lrm", 0x200E},
    {"lsaquo", 0x2039}, {"lsqb", '['},      {"lsquo", 0x2018},  {"lt", '<'},        {"mdash", 0x2014},
    {"middot", 0xB7},   {"minus", 0x2212},  {"nbsp", 0xA0},     {"ndash", 0x2013},  {"ne", 0x2260},
    {"not", 0xAC},      {"num", '#'},       {"para", 0xB6},     {"percnt", '%'},    {"permil", 0x2030},
    {"plus", '+'},      {"plusmn", 0xB1},   {"pound", 0xA3},    {"prime", 0x2032},  {"quest", '?'},
    {"quot", '"'},      {"raquo", 0xBB},    {"rarr", 0x2192},   {"rcub", '}'},      {"rdquo", 0x201D},
    {"reg", 0xAE},      {"rlm", 0x200F},    {"rpar", ')'},      {"rsaquo", 0x203A}, {"rsqb", ']'},
    {"rsquo", 0x2019},  {"sbquo", 0x201A},  {"sect", 0xA7},     {"shy", 0xAD},      {"sol", '/'},
    {"sup1", 0xB9},     {"sup2", 0xB2},     {"sup3", 0xB3},     {"thinsp", 0x2009}, {"tilde", 0x2DC},
    {"times", 0xD7},    {"trade", 0x2122},  {"uarr", 0x2191},   {"vert", '|'},      {"yen", 0xA5},
    {"zwj", 0x200D},    {"zwnj", 0x200C},
});

bool isAlphanumeric(char c)
{
    return characters::is(c, characters::letter | characters::digit);
}

char32_t digitValue(char c)
{
    return characters::is(c, characters::digit) ? static_cast<char32_t>(c - '0')
                                                : static_cast<char32_t>(characters::lower(c) - 'a') + 10;
}

// A number of at most `most` digits; more make no character.
struct Number {
    char32_t value = 0;
    std::size_t digits = 0;
};

Number numberAt(std::string_view text, std::size_t at, unsigned digitClass, std::size_t most)
{
    Number number;
    const char32_t base = digitClass == characters::hex ? 16 : 10;
    while (number.digits < most && at + number.digits < text.size() &&
           characters::is(text[at + number.digits], digitClass))
        number.value = number.value * base + digitValue(text[at + number.digits++]);
    return number;
}

WrittenCharacter numericReference(std::string_view text, std::size_t at, std::size_t number)
{
    constexpr std::size_t mostDigits = 7;
    const bool isHex = number < text.size() && characters::lower(text[number]) == 'x';
    const std::size_t digits = number + (isHex ? 1 : 0);
    const Number value = numberAt(text, digits, isHex ? characters::hex : characters::digit, mostDigits);
    const std::size_t end = digits + value.digits;
    if (value.digits == 0 || value.value == 0 || end >= text.size() || text[end] != ';')
        return {0, 0};
    return {value.value, end + 1 - at};
}

WrittenCharacter namedReference(std::string_view text, std::size_t at, std::size_t name)
{
    constexpr std::size_t longestName = 31;
    std::size_t end = name;
    while (end < text.size() && end - name <= longestName && isAlphanumeric(text[end]))
        ++end;
    if (end == name || end >= text.size() || text[end] != ';' ||
        !characters::is(text[name], characters::letter))
        return {0, 0};
    const std::string_view written = text.substr(name, end - name);
    const auto isBefore = [](const NamedCharacter &entry, std::string_view value) {
        return entry.name < value;
    };
    const auto *const known = std::lower_bound(names.begin(), names.end(), written, isBefore);
    const bool isKnown = known != names.end() && known->name == written;
    return {isKnown ? known->value : unknownCharacter, end + 1 - at};
}

} // namespace

WrittenCharacter characterReference(std::string_view text, std::size_t at)
{
    constexpr std::string_view ampersand = "amp;";
    std::size_t name = at + 1;
    if (name == text.size() || (text[name] != '#' && !characters::is(text[name], characters::letter)))
        return {0, 0};
    while (text.substr(name).starts_with(ampersand))
        name += ampersand.size();
    const bool isNumber = name < text.size() && text[name] == '#';
    const WrittenCharacter inner =
        isNumber ? numericReference(text, at, name + 1) : namedReference(text, at, name);
    if (inner.value != 0)
        return inner;
    return name == at + 1 ? WrittenCharacter{0, 0} : WrittenCharacter{'&', name - at};
}

WrittenCharacter backslashEscape(std::string_view text, std::size_t at)
{
    std::size_t behind = at;
    while (behind < text.size() && text[behind] == '\\')
        ++behind;
    if (behind == text.size())
        return {'\\', behind - at};
    const char c = text[behind];
    if (c == 'u' || c == 'x') {
        const std::size_t most = c == 'u' ? 4 : 2;
        const Number number = numberAt(text, behind + 1, characters::hex, most);
        if (number.digits == most)
            return {number.value == 0 ? U'\1' : number.value, behind + 1 + most - at};
    }
    if (isAlphanumeric(c))
        return {'\n', behind + 1 - at};
    const bool isAscii = !characters::is(c, characters::nonAscii);
    return {isAscii ? static_cast<unsigned char>(c) : U'\\', behind + 1 - at};
}

} // namespace velmora
