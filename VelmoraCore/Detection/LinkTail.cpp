#include <VelmoraCore/Detection/LinkProperties.h>
#include <VelmoraCore/Detection/LinkTail.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/Utf8.h>

#include <algorithm>
#include <array>
#include <optional>

namespace velmora {

namespace {

class TailScanner {
public:
    // Clearing the stack of brackets would cost more than most tails.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
    TailScanner(std::string_view text, std::size_t begin, Quoting quoting)
        : text_(text)
        , at_(begin)
        , safe_(begin)
        , quoting_(quoting)
    {
    }

    LinkTail scan()
    {
        while (at_ < text_.size() && step()) {
        }
        const std::size_t fragment = std::min(fragment_, safe_);
        return {safe_, std::min(query_, fragment), fragment};
    }

private:
    enum class Part { path, query, fragment, directive };

    // Takes in a stretch of plain characters or one other character. False when the link ends before it.
    bool step()
    {
        const std::size_t before = at_;
        while (at_ < text_.size() && characters::is(text_[at_], characters::plain) && !endsQuote())
            ++at_;
        if (at_ != before) {
            safe_ = at_;
            return true;
        }
        return characters::is(text_[at_], characters::nonAscii) ? takeNonAscii() : takeAscii(text_[at_]);
    }

    bool endsQuote() const
    {
        return quoting_ == Quoting::escapedQuoted && text_[at_] == '\\' && at_ + 1 < text_.size() &&
               text_[at_ + 1] == '"';
    }

    bool takeAscii(char c)
    {
        switch (c) {
        case '/':
            return separate(part_ == Part::path);
        case '&':
        case '=':
            return separate(part_ == Part::query || part_ == Part::directive);
        case '?':
            if (part_ == Part::path)
                begin(Part::query, query_);
            return soft(1);
        case '#':
            if (part_ == Part::path || part_ == Part::query)
                begin(Part::fragment, fragment_);
            return include(1);
        case ':':
            if (part_ == Part::fragment && text_.substr(at_, 3) == ":~:")
                enter(Part::directive);
            return soft(1);
        case '"':
            return quoting_ == Quoting::none && soft(1);
        case '!':
        case '\'':
        case ',':
        case '.':
        case ';':
            return soft(1);
        case '(':
        case '[':
        case '{':
            return open(static_cast<char32_t>(c), 1);
        case ')':
            return close('(', 1);
        case ']':
            return close('[', 1);
        case '}':
            return close('{', 1);
        default: // Blanks, controls, angle brackets, the escape before a closing quote.
            return false;
        }
    }

    bool takeNonAscii()
    {
        const utf8::CodePoint point = utf8::decode(text_, at_);
        switch (linkTerm(point.value)) {
        case LinkTerm::include:
            return include(point.length);
        case LinkTerm::soft:
            return soft(point.length);
        case LinkTerm::open:
            return open(point.value, point.length);
        case LinkTerm::close:
            return close(linkBracket(point.value), point.length);
        case LinkTerm::hard:
            break;
        }
        return false;
    }

    // Brackets pair only between two separators of a part.
    bool separate(bool separates)
    {
        if (separates)
            depth_ = 0;
        return include(1);
    }

    void enter(Part part)
    {
        part_ = part;
        depth_ = 0;
    }

    void begin(Part part, std::size_t &place)
    {
        enter(part);
        place = at_;
    }

    bool include(std::size_t length)
    {
        at_ += length;
        safe_ = at_;
        return true;
    }

    bool soft(std::size_t length)
    {
        at_ += length;
        return true;
    }

    bool open(char32_t bracket, std::size_t length)
    {
        if (depth_ == open_.size())
            return false;
        open_[depth_++] = bracket;
        return soft(length);
    }

    bool close(char32_t bracket, std::size_t length)
    {
        if (depth_ == 0 || open_[depth_ - 1] != bracket)
            return false;
        --depth_;
        return include(length);
    }

    // Deeper nesting than this is no link that anybody wrote.
    static constexpr std::size_t deepest = 125;

    std::string_view text_;
    std::size_t at_;
    std::size_t safe_;
    std::size_t query_ = std::string_view::npos;
    std::size_t fragment_ = std::string_view::npos;
    std::size_t depth_ = 0;
    Quoting quoting_;
    Part part_ = Part::path;
    std::array<char32_t, deepest> open_; // Only the first `depth_` have a value.
};

// Most links hold neither brackets nor quotes nor characters outside ASCII. Their end is the end of the word,
// without the punctuation there.
std::optional<LinkTail> plainTail(std::string_view text, std::size_t begin)
{
    std::size_t end = findLinkDelimiter(text, begin);
    if (end < text.size() && !characters::is(text[end], characters::blank))
        return std::nullopt;
    while (end > begin && characters::is(text[end - 1], characters::soft))
        --end;
    const std::string_view tail = text.substr(begin, end - begin);
    const std::size_t fragment = std::min(tail.find('#'), tail.size());
    const std::size_t query = std::min(tail.substr(0, fragment).find('?'), fragment);
    return LinkTail{end, begin + query, begin + fragment};
}

} // namespace

LinkTail linkTail(std::string_view text, std::size_t begin, Quoting quoting)
{
    if (quoting == Quoting::none) {
        if (const auto tail = plainTail(text, begin))
            return *tail;
    }
    return TailScanner(text, begin, quoting).scan();
}

} // namespace velmora
