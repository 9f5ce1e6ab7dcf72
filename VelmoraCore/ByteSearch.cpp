#include <VelmoraCore/ByteSearch.h>
#include <VelmoraCore/CharacterClasses.h>

#ifdef __SSE2__
#include <emmintrin.h>

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

} // namespace

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

} // namespace portable

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

    unsigned blanks() const
    {
        // The smaller of a byte and a space is the byte itself: at most a space.
        const __m128i low = _mm_cmpeq_epi8(_mm_min_epu8(bytes_, all(' ')), bytes_);
        return mask(_mm_or_si128(low, _mm_or_si128(equals(0x7F), angles())));
    }

    unsigned delimiters() const
    {
        // As signed numbers the bytes of non-ASCII characters are the lowest.
        const __m128i outside = _mm_cmpgt_epi8(all('!'), bytes_);
        const __m128i round = _mm_cmpeq_epi8(_mm_and_si128(bytes_, all('\xFE')), all('('));
        const __m128i folded = _mm_or_si128(bytes_, all(0x20));
        const __m128i others =
            _mm_or_si128(_mm_cmpeq_epi8(folded, all('{')), _mm_cmpeq_epi8(folded, all('}')));
        const __m128i single = _mm_or_si128(equals('"'), equals(0x7F));
        return mask(
            _mm_or_si128(_mm_or_si128(_mm_or_si128(outside, angles()), _mm_or_si128(round, others)), single));
    }

private:
    static __m128i all(char value) { return _mm_set1_epi8(value); }

    static unsigned mask(__m128i lanesSet) { return static_cast<unsigned>(_mm_movemask_epi8(lanesSet)); }

    __m128i equals(char value) const { return _mm_cmpeq_epi8(bytes_, all(value)); }

    __m128i angles() const { return _mm_cmpeq_epi8(_mm_and_si128(bytes_, all('\xFD')), all('<')); }

    __m128i bytes_;
};

} // namespace

std::size_t findBlank(std::string_view text, std::size_t begin)
{
    for (; begin + lanes <= text.size(); begin += lanes) {
        if (const unsigned found = Bytes(text.data() + begin).blanks())
            return begin + static_cast<std::size_t>(std::countr_zero(found));
    }
    return portable::findBlank(text, begin);
}

std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end)
{
    for (; end >= floor + lanes; end -= lanes) {
        if (const unsigned found = Bytes(text.data() + end - lanes).blanks())
            return end - lanes + static_cast<std::size_t>(std::bit_width(found));
    }
    return portable::behindLastBlank(text, floor, end);
}

std::size_t findLinkDelimiter(std::string_view text, std::size_t begin)
{
    for (; begin + lanes <= text.size(); begin += lanes) {
        if (const unsigned found = Bytes(text.data() + begin).delimiters())
            return begin + static_cast<std::size_t>(std::countr_zero(found));
    }
    return portable::findLinkDelimiter(text, begin);
}

#else

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

#endif

} // namespace velmora
