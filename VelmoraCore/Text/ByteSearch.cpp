#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#ifdef __SSE2__
#include <emmintrin.h>

#include <algorithm>
#include <bit>
#endif

namespace velmora {

namespace portable {

namespace {

std::size_t findOneOf(std::string_view text, std::size_t begin, unsigned wanted)
{
    while (begin < text.size() && !characters::is(text[begin], wanted))
        ++begin;
    return begin;
}

unsigned marksOf(std::string_view text, std::size_t begin, unsigned wanted)
{
    unsigned marks = 0;
    const std::string_view bytes = text.substr(begin, 16);
    for (std::size_t at = 0; at < bytes.size(); ++at)
        marks |= unsigned{characters::is(bytes[at], wanted)} << at;
    return marks;
}

} // namespace

std::size_t findQueryMark(std::string_view text, std::size_t begin)
{
    for (std::size_t at = begin; at + 1 < text.size(); ++at) {
        if (text[at] == '?' && !characters::is(text[at + 1], characters::blank))
            return at;
    }
    return text.size();
}

std::size_t findBlank(std::string_view text, std::size_t begin)
{
    return findOneOf(text, begin, characters::blank);
}

std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end)
{
    while (end > floor && !characters::is(text[end - 1], characters::blank))
        --end;
    return end;
}

std::size_t findLinkDelimiter(std::string_view text, std::size_t begin)
{
    return findOneOf(text, begin, characters::delimiter);
}

std::size_t findCoded(std::string_view text, std::size_t begin)
{
    return findOneOf(text, begin, characters::coded);
}

WordMarks wordMarks(std::string_view text, std::size_t begin)
{
    WordMarks marks;
    const std::string_view bytes = text.substr(begin, WordMarks::reach);
    const auto isHost = [](char c) { return characters::is(c, characters::host | characters::dot); };
    for (; marks.length < bytes.size() && isHost(bytes[marks.length]); ++marks.length) {
        marks.dots |= std::uint64_t{bytes[marks.length] == '.'} << marks.length;
        marks.hyphens |= std::uint64_t{bytes[marks.length] == '-'} << marks.length;
    }
    return marks;
}

unsigned linkMarks(std::string_view text, std::size_t begin)
{
    return marksOf(text, begin, characters::mark);
}

unsigned separatorMarks(std::string_view text, std::size_t begin)
{
    return marksOf(text, begin, characters::separator);
}

} // namespace portable

namespace {

template<Mark kind>
unsigned portableMarks(std::string_view text, std::size_t begin)
{
    return kind == Mark::link ? portable::linkMarks(text, begin) : portable::separatorMarks(text, begin);
}

} // namespace

#ifdef __SSE2__

namespace {

constexpr std::size_t lanes = 16;

// Sixteen bytes at once; each test answers with a bit for each byte.
class Bytes {
public:
    explicit Bytes(const char *from)
        : bytes_(_mm_loadu_si128(reinterpret_cast<const __m128i *>(from)))
    {
    }

    unsigned questionMarks() const { return mask(equals('?')); }

    unsigned separators() const { return mask(_mm_or_si128(equals('&'), equals('='))); }

    unsigned blanks() const
    {
        // The smaller of a byte and a space is the byte itself: at most a space.
        const __m128i low = _mm_cmpeq_epi8(_mm_min_epu8(bytes_, all(' ')), bytes_);
        return mask(_mm_or_si128(low, _mm_or_si128(equals(0x7F), angles())));
    }

    unsigned coded() const
    {
        return mask(
            _mm_or_si128(_mm_or_si128(outsideOrBlank(), angles()), _mm_or_si128(equals('%'), equals(0x7F))));
    }

    unsigned delimiters() const
    {
        // "'" to ")", and with the bit of small letters set "[" to "]" and "{" to "}" in one range.
        const __m128i round = isWithin(bytes_, '\'', ')');
        const __m128i others = isWithin(_mm_or_si128(bytes_, all(0x20)), '{', '}');
        const __m128i marks = _mm_or_si128(isWithin(bytes_, ':', '<'),
                                           _mm_or_si128(equals('>'), _mm_or_si128(equals('`'), equals('^'))));
        const __m128i single = _mm_or_si128(equals('"'), equals(0x7F));
        return mask(_mm_or_si128(_mm_or_si128(outsideOrBlank(), marks),
                                 _mm_or_si128(_mm_or_si128(round, others), single)));
    }

    unsigned dots() const { return mask(equals('.')); }

    unsigned hyphens() const { return mask(equals('-')); }

    // All but letters, digits, "-", "_" and dots.
    unsigned others() const
    {
        const __m128i letters = isWithin(_mm_or_si128(bytes_, all(0x20)), 'a', 'z');
        const __m128i digits = isWithin(bytes_, '-', '9'); // With "-", "." and "/".
        const __m128i host = _mm_or_si128(_mm_or_si128(letters, digits), equals('_'));
        return mask(_mm_andnot_si128(equals('/'), host)) ^ 0xFFFFU;
    }

    unsigned linkMarks() const
    {
        const __m128i first = isWithin(bytes_, '"', ')');
        const __m128i second = isWithin(bytes_, ':', '?');
        const __m128i third = isWithin(_mm_or_si128(bytes_, all(0x20)), '{', '~'); // "[" to "^" as well.
        const __m128i single = _mm_or_si128(equals('`'), equals(0x7F));
        return mask(_mm_or_si128(_mm_or_si128(outsideOrBlank(), first),
                                 _mm_or_si128(_mm_or_si128(second, third), single)));
    }

private:
    static __m128i all(char value) { return _mm_set1_epi8(value); }

    static unsigned mask(__m128i lanesSet) { return static_cast<unsigned>(_mm_movemask_epi8(lanesSet)); }

    __m128i equals(char value) const { return _mm_cmpeq_epi8(bytes_, all(value)); }

    static __m128i isWithin(__m128i bytes, char first, char last)
    {
        // Comparisons are of signed numbers: the range is moved to the lowest of those.
        const __m128i moved = _mm_add_epi8(bytes, all(static_cast<char>(0x80 - first)));
        return _mm_cmplt_epi8(moved, all(static_cast<char>(last - first + 1 - 0x80)));
    }

    __m128i angles() const { return _mm_cmpeq_epi8(_mm_and_si128(bytes_, all('\xFD')), all('<')); }

    // As signed numbers the bytes of non-ASCII characters are the lowest.
    __m128i outsideOrBlank() const { return _mm_cmpgt_epi8(all('!'), bytes_); }

    __m128i bytes_;
};

using Test = unsigned (Bytes::*)() const;

// The first byte that passes the test. The last bytes of the text are looked at together with bytes before
// them.
template<Test test>
std::size_t findFirst(std::string_view text, std::size_t begin)
{
    for (; begin + lanes <= text.size(); begin += lanes) {
        if (const unsigned found = (Bytes(text.data() + begin).*test)())
            return begin + static_cast<std::size_t>(std::countr_zero(found));
    }
    if (begin >= text.size())
        return text.size();
    const std::size_t last = text.size() - lanes;
    const unsigned found = (Bytes(text.data() + last).*test)() >> (begin - last);
    return found == 0 ? text.size() : begin + static_cast<std::size_t>(std::countr_zero(found));
}

// The question marks that something above a space follows, among sixteen bytes; looks at one byte more.
__m128i followedMarks(const char *from)
{
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
    const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from + 1));
    const __m128i followed = _mm_cmpeq_epi8(_mm_max_epu8(next, _mm_set1_epi8('!')), next);
    return _mm_and_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('?')), followed);
}

// Whether 64 bytes may hold what we look for. Questions of prose are sorted out here, without a branch for
// each.
bool mayHoldQueryMark(const char *from)
{
    const __m128i first = _mm_or_si128(followedMarks(from), followedMarks(from + lanes));
    const __m128i second = _mm_or_si128(followedMarks(from + 2 * lanes), followedMarks(from + 3 * lanes));
    return _mm_movemask_epi8(_mm_or_si128(first, second)) != 0;
}

unsigned queryMarks(const char *from)
{
    return Bytes(from).questionMarks() & ~Bytes(from + 1).blanks();
}

} // namespace

std::size_t findQueryMark(std::string_view text, std::size_t begin)
{
    constexpr std::size_t many = 4 * lanes;
    while (begin + lanes < text.size()) {
        while (begin + many < text.size() && !mayHoldQueryMark(text.data() + begin))
            begin += many;
        const std::size_t end = std::min(begin + many, text.size() - lanes);
        for (; begin < end; begin += lanes) {
            if (const unsigned found = queryMarks(text.data() + begin))
                return begin + static_cast<std::size_t>(std::countr_zero(found));
        }
    }
    if (text.size() <= lanes || begin + 1 >= text.size())
        return portable::findQueryMark(text, begin);
    const std::size_t last = text.size() - lanes - 1;
    const unsigned found = queryMarks(text.data() + last) >> (begin - last);
    return found == 0 ? text.size() : begin + static_cast<std::size_t>(std::countr_zero(found));
}

std::size_t findBlank(std::string_view text, std::size_t begin)
{
    return text.size() < lanes ? portable::findBlank(text, begin) : findFirst<&Bytes::blanks>(text, begin);
}

std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end)
{
    for (; end >= floor + lanes; end -= lanes) {
        if (const unsigned found = Bytes(text.data() + end - lanes).blanks())
            return end - lanes + static_cast<std::size_t>(std::bit_width(found));
    }
    if (end < lanes)
        return portable::behindLastBlank(text, floor, end);
    const std::size_t first = end - lanes;
    const unsigned found = Bytes(text.data() + first).blanks() >> (floor - first);
    return found == 0 ? floor : floor + static_cast<std::size_t>(std::bit_width(found));
}

std::size_t findLinkDelimiter(std::string_view text, std::size_t begin)
{
    return text.size() < lanes ? portable::findLinkDelimiter(text, begin)
                               : findFirst<&Bytes::delimiters>(text, begin);
}

std::size_t findCoded(std::string_view text, std::size_t begin)
{
    return text.size() < lanes ? portable::findCoded(text, begin) : findFirst<&Bytes::coded>(text, begin);
}

namespace {

// Adds the bytes of a word behind the first `skipped` ones. False where it ends.
bool addTo(WordMarks &marks, const Bytes &bytes, std::size_t skipped)
{
    const auto length = static_cast<std::size_t>(std::countr_zero((bytes.others() | 1U << lanes) >> skipped));
    const std::uint64_t own = (1U << length) - 1;
    marks.dots |= (bytes.dots() >> skipped & own) << marks.length;
    marks.hyphens |= (bytes.hyphens() >> skipped & own) << marks.length;
    marks.length += length;
    return length == lanes;
}

} // namespace

WordMarks wordMarks(std::string_view text, std::size_t begin)
{
    if (text.size() < lanes)
        return portable::wordMarks(text, begin);
    const std::size_t last = text.size() - lanes;
    WordMarks marks;
    bool goesOn = true;
    while (goesOn && marks.length < WordMarks::reach) {
        const std::size_t at = begin + marks.length;
        // The last bytes of the text are looked at together with bytes before them.
        goesOn = at <= last ? addTo(marks, Bytes(text.data() + at), 0)
                            : addTo(marks, Bytes(text.data() + last), at - last);
    }
    return marks;
}

namespace {

template<Mark kind>
unsigned marksOf(const char *bytes)
{
    return kind == Mark::link ? Bytes(bytes).linkMarks() : Bytes(bytes).separators();
}

} // namespace

template<Mark kind>
void Marks<kind>::look()
{
    first_ = behind_;
    behind_ += lanes;
    if (behind_ <= text_.size()) {
        marks_ = marksOf<kind>(text_.data() + first_);
    } else if (text_.size() < lanes) {
        marks_ = portableMarks<kind>(text_, first_);
    } else {
        // The last bytes of the text are looked at together with bytes before them.
        const std::size_t last = text_.size() - lanes;
        marks_ = marksOf<kind>(text_.data() + last) >> (first_ - last);
    }
}

#else

std::size_t findQueryMark(std::string_view text, std::size_t begin)
{
    return portable::findQueryMark(text, begin);
}

std::size_t findBlank(std::string_view text, std::size_t begin)
{
    return portable::findBlank(text, begin);
}

std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end)
{
    return portable::behindLastBlank(text, floor, end);
}

std::size_t findLinkDelimiter(std::string_view text, std::size_t begin)
{
    return portable::findLinkDelimiter(text, begin);
}

std::size_t findCoded(std::string_view text, std::size_t begin)
{
    return portable::findCoded(text, begin);
}

WordMarks wordMarks(std::string_view text, std::size_t begin)
{
    return portable::wordMarks(text, begin);
}

template<Mark kind>
void Marks<kind>::look()
{
    first_ = behind_;
    behind_ += 16;
    marks_ = portableMarks<kind>(text_, first_);
}

#endif

template class Marks<Mark::link>;
template class Marks<Mark::separator>;

} // namespace velmora
