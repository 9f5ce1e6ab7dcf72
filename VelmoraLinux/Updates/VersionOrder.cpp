#include "VersionOrder.h"

#include <algorithm>
#include <vector>

namespace {

// In rising order: where two kinds are compared, the later one is the newer version.
enum class Kind { letters, separator, number };

struct Piece {
    Kind kind;
    QStringView text;
};

Kind kindOf(QChar character)
{
    if (character >= u'0' && character <= u'9')
        return Kind::number;
    if (character.isSpace() || character.isPunct() || character.isSymbol())
        return Kind::separator;
    return Kind::letters;
}

std::vector<Piece> pieces(QStringView version)
{
    if (const qsizetype dash = version.indexOf(u'-'); dash >= 0)
        version.truncate(dash);
    std::vector<Piece> result;
    for (qsizetype begin = 0, end = 0; begin < version.size(); begin = end) {
        const Kind kind = kindOf(version[begin]);
        end = begin + 1;
        while (kind != Kind::separator && end < version.size() && kindOf(version[end]) == kind)
            ++end;
        result.push_back({kind, version.sliced(begin, end - begin)});
    }
    return result;
}

bool goesOnWithDotAndNumber(const std::vector<Piece> &version, size_t at)
{
    return at + 1 < version.size() && version[at].text == u"." && version[at + 1].kind == Kind::number;
}

// Appends ".0" to `version` for each number that `other` has more.
void pad(std::vector<Piece> &version, const std::vector<Piece> &other)
{
    while (goesOnWithDotAndNumber(other, version.size())) {
        version.push_back({Kind::separator, u"."});
        version.push_back({Kind::number, u"0"});
    }
}

QStringView withoutLeadingZeros(QStringView digits)
{
    const auto *first = std::find_if(digits.begin(), digits.end(), [](QChar digit) { return digit != u'0'; });
    return digits.sliced(first - digits.begin());
}

std::weak_ordering comparePieces(const Piece &left, const Piece &right)
{
    if (left.kind != right.kind)
        return left.kind <=> right.kind;
    if (left.kind == Kind::letters)
        return left.text.compare(right.text) <=> 0;
    if (left.kind == Kind::separator)
        return std::weak_ordering::equivalent;
    const QStringView leftDigits = withoutLeadingZeros(left.text);
    const QStringView rightDigits = withoutLeadingZeros(right.text);
    if (leftDigits.size() != rightDigits.size())
        return leftDigits.size() <=> rightDigits.size();
    return leftDigits.compare(rightDigits) <=> 0;
}

} // namespace

std::weak_ordering compareVersions(QStringView left, QStringView right)
{
    std::vector<Piece> a = pieces(left);
    std::vector<Piece> b = pieces(right);
    pad(a, b);
    pad(b, a);
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        if (const auto order = comparePieces(a[i], b[i]); order != std::weak_ordering::equivalent)
            return order;
    }
    if (a.size() == b.size())
        return std::weak_ordering::equivalent;
    // The longer one is newer, unless it continues with letters as a beta version does.
    const bool leftIsLonger = a.size() > b.size();
    const bool betaFollows = (leftIsLonger ? a : b)[common].kind == Kind::letters;
    return leftIsLonger == betaFollows ? std::weak_ordering::less : std::weak_ordering::greater;
}
