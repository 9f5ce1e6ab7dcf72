#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

// Searches over bytes, sixteen at a time where the processor can. Each looks from `begin` on and gives the
// text's size if it finds nothing.
namespace velmora {

// The first "?" that something follows in the same word: what may begin the query of a link.
std::size_t findQueryMark(std::string_view text, std::size_t begin);

// The first byte that ends every link: a blank, a control, "<" or ">".
std::size_t findBlank(std::string_view text, std::size_t begin);

// Behind the last such byte between `floor` and `end`; `floor` if there is none.
std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end);

// The first byte at which the end of a link needs more thought: one that ends every link, a bracket, a quote,
// a backslash, ":", ";", "^", "|", a character outside ASCII.
std::size_t findLinkDelimiter(std::string_view text, std::size_t begin);

// The first byte that is not to be taken as it stands in a name or value: "%", one that ends every link, a
// character outside ASCII.
std::size_t findCoded(std::string_view text, std::size_t begin);

// Letters, digits, "-", "_" and dots in a row, as in a host of ASCII: up to 64 bytes, a bit for each, the first
// one lowest.
struct WordMarks {
    static constexpr std::size_t reach = 64;

    std::size_t length = 0;
    std::uint64_t dots = 0;
    std::uint64_t hyphens = 0;

    bool operator==(const WordMarks &) const = default;
};

// Those from `begin` on.
WordMarks wordMarks(std::string_view text, std::size_t begin);

// What a walk over bytes stops at.
enum class Mark {
    // What separates the parts of a link's tail, needs more thought, or ends it, with few others among them: blanks,
    // controls, all punctuation but ! * + , - . / @ _, characters outside ASCII.
    link,
    // "&" and "=".
    separator,
};

// Walks over the bytes of one kind, from `begin` on.
template<Mark kind>
class Marks {
public:
    Marks(std::string_view text, std::size_t begin)
        : text_(text)
        , behind_(begin)
    {
    }

    // The place of the next one; the text's size behind the last.
    std::size_t next()
    {
        while (marks_ == 0) {
            if (behind_ >= text_.size())
                return text_.size();
            look();
        }
        const std::size_t place = first_ + static_cast<std::size_t>(std::countr_zero(marks_));
        marks_ &= marks_ - 1;
        return place;
    }

private:
    void look();

    std::string_view text_;
    std::size_t behind_;    // What was looked at.
    std::size_t first_ = 0; // Where those bytes begin.
    unsigned marks_ = 0;    // A bit for each of them, the first one lowest.
};

extern template class Marks<Mark::link>;
extern template class Marks<Mark::separator>;

using LinkMarks = Marks<Mark::link>;
using SeparatorMarks = Marks<Mark::separator>;

// The same, byte by byte: what the others have to give on every machine.
namespace portable {

std::size_t findQueryMark(std::string_view text, std::size_t begin);
std::size_t findBlank(std::string_view text, std::size_t begin);
std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end);
std::size_t findLinkDelimiter(std::string_view text, std::size_t begin);
std::size_t findCoded(std::string_view text, std::size_t begin);
WordMarks wordMarks(std::string_view text, std::size_t begin);
// Of sixteen bytes at most.
unsigned linkMarks(std::string_view text, std::size_t begin);
unsigned separatorMarks(std::string_view text, std::size_t begin);

} // namespace portable

} // namespace velmora
