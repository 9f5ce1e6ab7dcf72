#include <VelmoraCore/Hosts/DomainNameTables.h>
#include <VelmoraCore/Hosts/InternationalName.h>
#include <VelmoraCore/Hosts/Punycode.h>
#include <VelmoraCore/Text/CharacterProperties.h>
#include <VelmoraCore/Text/Normalization.h>
#include <VelmoraCore/Text/Utf8.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

namespace velmora {

namespace {

constexpr std::size_t longestLabel = 63;
constexpr std::size_t longestName = 253; // Without the dot at its end.
constexpr std::u32string_view acePrefix = U"xn--";
constexpr char32_t nonJoiner = 0x200C;
constexpr char32_t joiner = 0x200D;
constexpr std::uint8_t virama = 9; // A combining class.

bool isAscii(std::u32string_view label)
{
    return std::all_of(label.begin(), label.end(), [](char32_t point) { return point < 0x80; });
}

std::uint32_t targetOf(char32_t point)
{
    const auto startsAfter = [](char32_t value, const tables::NameRun &run) { return value < run.first; };
    const auto &run =
        *std::prev(std::upper_bound(tables::nameRuns.begin(), tables::nameRuns.end(), point, startsAfter));
    const bool isOwn = run.target < tables::ignoredInNames;
    return isOwn ? run.target + (point - run.first) : run.target;
}

// Appends what a name has in place of the character. False if no name may have it.
bool appendMapped(std::u32string &name, char32_t point)
{
    const std::uint32_t target = point == utf8::illFormed ? tables::disallowedInNames : targetOf(point);
    if ((target & tables::mappedToSequence) != 0) {
        const auto sequence = tables::namePool.subspan(target & 0xFFFF, target >> 16 & 0xFF);
        name.append(sequence.begin(), sequence.end());
    } else if (target < tables::ignoredInNames) {
        name.push_back(target);
    }
    return target != tables::disallowedInNames;
}

// What IDNA once mapped and later allowed, appended in the old way. False if the character is another.
bool appendFolded(std::u32string &label, char32_t point)
{
    if (point == U'\u00DF' || point == U'\u1E9E')
        label.append(U"ss");
    else if (point == U'\u03C2')
        label.push_back(U'\u03C3');
    else
        return point == nonJoiner || point == joiner;
    return true;
}

template<typename Append>
std::optional<std::u32string> mapped(std::string_view text, Append append)
{
    std::u32string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const utf8::CodePoint point = utf8::decode(text, at);
        if (!append(result, point.value))
            return std::nullopt;
        at += point.length;
    }
    return mayNeedComposing(result) ? composed(result) : result;
}

bool joins(std::u32string_view label, std::size_t at)
{
    const auto joiningOf = [&label](std::size_t place) { return propertiesOf(label[place]).joining; };
    std::size_t before = at - 1;
    while (before > 0 && joiningOf(before) == Joining::transparent)
        --before;
    std::size_t after = at + 1;
    while (after < label.size() && joiningOf(after) == Joining::transparent)
        ++after;
    return (joiningOf(before) == Joining::left || joiningOf(before) == Joining::dual) &&
           after < label.size() && (joiningOf(after) == Joining::right || joiningOf(after) == Joining::dual);
}

// Appendix A of RFC 5892.
bool hasJoinersInPlace(std::u32string_view label)
{
    for (std::size_t at = 0; at < label.size(); ++at) {
        if (label[at] != nonJoiner && label[at] != joiner)
            continue;
        if (at == 0)
            return false;
        const bool followsVirama = propertiesOf(label[at - 1]).combiningClass == virama;
        if (!followsVirama && (label[at] == joiner || !joins(label, at)))
            return false;
    }
    return true;
}

// Sets of directions.
namespace directions {

constexpr unsigned bit(Direction direction)
{
    return 1U << static_cast<unsigned>(direction);
}

constexpr unsigned left = bit(Direction::left);
constexpr unsigned right = bit(Direction::right);
constexpr unsigned arabicNumber = bit(Direction::arabicNumber);
constexpr unsigned europeanNumber = bit(Direction::europeanNumber);
constexpr unsigned anywhere = europeanNumber | bit(Direction::neutral) | bit(Direction::nonspacing);

unsigned of(char32_t point)
{
    return bit(propertiesOf(point).direction);
}

} // namespace directions

// The rule of RFC 5893 for names with a label that runs from right to left.
class DirectionRule {
public:
    void add(std::u32string_view label)
    {
        using namespace directions;
        unsigned seen = 0;
        for (const char32_t point : label)
            seen |= of(point);
        const unsigned first = of(label.front());
        const unsigned last = of(*std::find_if(label.rbegin(), std::prev(label.rend()), [](char32_t point) {
            return propertiesOf(point).direction != Direction::nonspacing;
        }));
        const unsigned numbers = europeanNumber | arabicNumber;
        const bool isLeft =
            first == left && (last & ~(left | europeanNumber)) == 0 && (seen & ~(left | anywhere)) == 0;
        const bool isRight = first == right && (last & ~(right | numbers)) == 0 &&
                             (seen & ~(right | arabicNumber | anywhere)) == 0 && (seen & numbers) != numbers;
        holds_ = holds_ && (isLeft || isRight);
        applies_ = applies_ || (seen & (right | arabicNumber)) != 0;
    }

    [[nodiscard]] bool isBroken() const { return applies_ && !holds_; }

private:
    bool holds_ = true;
    bool applies_ = false;
};

// Whether it is as the mapping would leave it.
bool isMapped(std::u32string_view label)
{
    const auto staysItself = [](char32_t point) { return targetOf(point) == point; };
    return std::all_of(label.begin(), label.end(), staysItself) &&
           (!mayNeedComposing(label) || composed(label) == label);
}

// Hyphens at the third and fourth place are kept for prefixes. Browsers count places in UTF-16.
bool hasHyphensOfPrefix(std::u32string_view label)
{
    std::size_t units = 0;
    while (units < 2 && !label.empty()) {
        units += label.front() > 0xFFFF ? 2U : 1U;
        label.remove_prefix(1);
    }
    return units == 2 && label.starts_with(U"--");
}

bool isValid(std::u32string_view label)
{
    return !label.empty() && label.front() != U'-' && label.back() != U'-' && !hasHyphensOfPrefix(label) &&
           label.find(U'.') == std::u32string_view::npos &&
           propertiesOf(label.front()).category != CharacterCategory::mark && hasJoinersInPlace(label);
}

// Makes the spelling of a name label by label.
class AsciiSpelling {
public:
    bool add(std::u32string_view label)
    {
        const bool isAce = label.starts_with(acePrefix);
        const auto shown =
            isAce ? punycode::decoded(label.substr(acePrefix.size())) : std::optional<std::u32string>(label);
        if (!shown || (isAce && (isAscii(*shown) || !isMapped(*shown))) || !isValid(*shown))
            return false;
        directions_.add(*shown);
        const std::size_t begin = text_.size();
        text_ += isAce || isAscii(label) ? utf8::encoded(label) : "xn--" + punycode::encoded(label);
        return text_.size() - begin <= longestLabel;
    }

    void addDot() { text_.push_back('.'); }

    [[nodiscard]] std::optional<std::string> text() const
    {
        const std::size_t length = text_.size() - (text_.ends_with('.') ? 1 : 0);
        return length > longestName || directions_.isBroken() ? std::nullopt : std::optional(text_);
    }

private:
    std::string text_;
    DirectionRule directions_;
};

} // namespace

std::optional<std::string> asciiName(std::string_view name)
{
    const std::optional<std::u32string> points = mapped(name, appendMapped);
    if (!points)
        return std::nullopt;
    AsciiSpelling spelling;
    std::u32string_view rest = *points;
    while (true) {
        const std::size_t dot = rest.find(U'.');
        if (!spelling.add(rest.substr(0, dot)))
            return std::nullopt;
        if (dot == std::u32string_view::npos)
            return spelling.text();
        spelling.addDot();
        rest.remove_prefix(dot + 1);
        if (rest.empty())
            return spelling.text();
    }
}

std::optional<std::string> foldedLabel(std::string_view label)
{
    const auto points = mapped(label, [](std::u32string &text, char32_t point) {
        return appendFolded(text, point) || appendMapped(text, point);
    });
    return points ? std::optional(utf8::encoded(*points)) : std::nullopt;
}

} // namespace velmora
