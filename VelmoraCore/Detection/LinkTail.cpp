#include <VelmoraCore/Detection/LinkTail.h>
#include <VelmoraCore/Detection/QueryCharacters.h>
#include <VelmoraCore/Detection/WrittenCharacter.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/Utf8.h>

#include <algorithm>
#include <array>
#include <optional>

namespace velmora {

namespace {

constexpr std::size_t nowhere = std::string_view::npos;

class TailScanner {
public:
    enum class Kind { web, other };

    // Clearing the stack of brackets would cost more than most tails.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
    TailScanner(std::string_view text, std::size_t begin, const LinkSurroundings &around, Kind kind)
        : text_(text)
        , begin_(begin)
        , at_(begin)
        , safe_(begin)
        , around_(around)
        , isWeb_(kind == Kind::web)
    {
    }

    LinkTail scan()
    {
        while (at_ < text_.size() && step()) {
        }
        if (isWeb_ && part_ == Part::query)
            leaveOpenEnds();
        const std::size_t fragment = std::min(fragment_, safe_);
        return {safe_, std::min(query_, fragment), fragment, goesOn_};
    }

private:
    enum class Part { path, query, fragment, directive };

    // Takes in a stretch of plain characters or one other character. False when the link ends before it.
    bool step()
    {
        const std::size_t before = at_;
        while (at_ < text_.size() && characters::is(text_[at_], characters::plain) && !closesMark())
            ++at_;
        if (at_ != before) {
            runBegin_ = before;
            safeBeforeRun_ = safe_;
            safe_ = at_;
            return true;
        }
        return characters::is(text_[at_], characters::nonAscii) ? takeNonAscii() : takeAscii(text_[at_]);
    }

    bool closesMark() const
    {
        return isWeb_ && text_[at_] == around_.mark && around_.closesAt(text_, at_, isInValue());
    }

    bool takeAscii(char c)
    {
        if (isWeb_ && (c == around_.separator || closesMark()))
            return false;
        switch (c) {
        case '/':
            return separate(part_ == Part::path);
        case '&':
            return isInWebQuery() ? takeAmpersand()
                                  : separate(part_ == Part::query || part_ == Part::directive);
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
            return takeColon();
        case '"':
        case '\'':
        case '`':
        case '\\':
        case '|':
            return isWeb_ ? takeQuote(c) : takeQuoteOfOther(c);
        case '!':
        case ',':
        case '.':
        case ';':
            return soft(1);
        default:
            return takeBracket(c);
        }
    }

    bool takeBracket(char c)
    {
        switch (c) {
        case '[':
            if (isWeb_ && beginsTitle())
                return false;
            return open(static_cast<char32_t>(c), 1);
        case '{':
            if (isWeb_ && beginsCommand())
                return false;
            [[fallthrough]];
        case '(':
            return open(static_cast<char32_t>(c), 1);
        case ')':
            return close('(', 1);
        case ']':
            return close('[', 1);
        case '}':
            return close('{', 1);
        default: // Blanks, controls, angle brackets.
            return false;
        }
    }

    // A closing tag, as in "[/url]", or text in brackets directly behind the link, as in "link[Title]": names
    // of parameters hold brackets, values begin with them.
    bool beginsTitle() const
    {
        return text_.substr(at_ + 1).starts_with('/') || (isInValue() && at_ > itemBegin_ && depth_ == 0);
    }

    // Commands of templates, as in "{/link}", "{{/link}}", "{% end %}", and attributes, as in "{:a=b}".
    bool beginsCommand() const
    {
        constexpr std::string_view signs = "/%#:!^>@";
        const std::size_t inner = text_.substr(at_ + 1).starts_with('{') ? at_ + 2 : at_ + 1;
        return inner < text_.size() && signs.find(text_[inner]) != nowhere;
    }

    bool takeNonAscii()
    {
        const utf8::CodePoint point = utf8::decode(text_, at_);
        const LinkCharacter character = linkCharacter(point.value);
        if (isInWebQuery()) {
            const bool isBehindAscii = beganInAscii();
            if (isBehindAscii ? character.endsAscii : character.endsQuery)
                return false;
            if (safeAtDoubt_ == nowhere && isBehindAscii && character.mayEndAscii)
                safeAtDoubt_ = safe_;
        }
        switch (character.term) {
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

    bool takeQuote(char c)
    {
        if (c == '|')
            return takePipe();
        if (part_ == Part::query) {
            if (c == '\\')
                goesOn_ = continuesQuery(backslashEscape(text_, at_).value, beganInAscii());
            return false;
        }
        const char next = at_ + 1 < text_.size() ? text_[at_ + 1] : '\0';
        if (c == '\\') // Before a query it is the shell's.
            return isPunctuation(next) && next != '?' && soft(1);
        if (c == '"')
            return !around_.isQuoted && isWordCharacter(next) && isWordCharacter(text_[at_ - 1]) && soft(1);
        return c == '\'' && soft(1);
    }

    bool takeQuoteOfOther(char c)
    {
        if (c == '"')
            return !around_.isQuoted && soft(1);
        if (c == '\\' && around_.isEscapedQuoted && text_.substr(at_ + 1).starts_with('"'))
            return false;
        return c == '\'' ? soft(1) : include(1);
    }

    // A vertical bar belongs to a query that goes on behind it with another parameter.
    bool takePipe()
    {
        if (part_ == Part::query && safeAtDoubt_ == nowhere)
            safeAtDoubt_ = safe_;
        return include(1);
    }

    bool takeColon()
    {
        if (isWeb_ && text_.substr(at_, 3) == "://" && beginsNextLink("https"))
            return false;
        if (isWeb_ && text_.substr(at_, 3) == "://" && beginsNextLink("http"))
            return false;
        if (part_ == Part::fragment && text_.substr(at_, 3) == ":~:")
            enter(Part::directive);
        return soft(1);
    }

    // Whether a link begins with the scheme that stands before this place. Within a link it may stand where a
    // name, a value or a step of the path begins.
    bool beginsNextLink(std::string_view scheme)
    {
        if (at_ - begin_ <= scheme.size())
            return false;
        const std::size_t begin = at_ - scheme.size();
        if (!characters::equalsIgnoringCase(text_.substr(begin, scheme.size()), scheme))
            return false;
        constexpr std::string_view within = "/=:#!?&";
        if (part_ == Part::query ? begin == itemBegin_ : within.find(text_[begin - 1]) != nowhere)
            return false;
        safe_ = begin == runBegin_ ? safeBeforeRun_ : begin;
        if (part_ == Part::query && safe_ > itemBegin_ && text_[safe_ - 1] == '/')
            --safe_; // As in "link/link".
        constexpr std::string_view glue = ",;|.:!?*~+^$@([{-";
        while (safe_ > begin_ && glue.find(text_[safe_ - 1]) != nowhere)
            --safe_;
        return true;
    }

    bool takeAmpersand()
    {
        if (text_[at_ - 1] == '^') {
            goesOn_ = true; // The shell of Windows escapes so.
            return false;
        }
        const bool mayBeReference =
            at_ + 1 < text_.size() && (text_[at_ + 1] == '#' || isWordCharacter(text_[at_ + 1]));
        const WrittenCharacter written =
            mayBeReference ? characterReference(text_, at_) : WrittenCharacter{0, 0};
        if (written.value == 0 || (written.value == unknownCharacter && isLast(written.length))) {
            if (isCommandSeparator())
                return false;
            return beginItem(1);
        }
        if (text_.substr(at_, written.length).ends_with("amp;"))
            return beginItem(written.length);
        goesOn_ = continuesQuery(written.value, beganInAscii());
        return false;
    }

    bool isLast(std::size_t length) const
    {
        return at_ + length >= text_.size() || characters::is(text_[at_ + length], characters::blank);
    }

    // "&&" behind the only parameter and before a single word of letters is the shell's.
    bool isCommandSeparator() const
    {
        if (!isFirstItem_ || !isInValue() || !text_.substr(at_).starts_with("&&"))
            return false;
        std::size_t end = at_ + 2;
        while (end < text_.size() &&
               characters::is(text_[end], characters::host | characters::dot | characters::slash))
            ++end;
        return end > at_ + 3 && (end == text_.size() || characters::is(text_[end], characters::blank));
    }

    bool beginItem(std::size_t length)
    {
        depth_ = 0;
        isFirstItem_ = false;
        safeAtDoubt_ = nowhere;
        include(length);
        itemBegin_ = at_;
        return true;
    }

    // Brackets pair only between two separators of a part.
    bool separate(bool separates)
    {
        if (separates)
            depth_ = 0;
        include(1);
        if (separates && part_ == Part::query)
            itemBegin_ = at_;
        return true;
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
        itemBegin_ = at_ + 1;
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
        if (depth_ == 0)
            safeAtBracket_ = safe_;
        open_[depth_++] = bracket;
        return soft(length);
    }

    bool close(char32_t bracket, std::size_t length)
    {
        if (depth_ == 0 || open_[depth_ - 1] != bracket) {
            endsAtBracket_ = true;
            return false;
        }
        --depth_;
        return include(length);
    }

    // What begins in the last parameter and does not end there is the text's: "link(see there".
    void leaveOpenEnds()
    {
        if (depth_ > 0 && !endsAtBracket_)
            safe_ = std::min(safe_, safeAtBracket_);
        safe_ = std::min(safe_, safeAtDoubt_);
    }

    bool isInValue() const { return part_ == Part::query && text_[itemBegin_ - 1] == '='; }

    bool isInWebQuery() const { return isWeb_ && part_ == Part::query; }

    // Whether the name or value here has begun, and in ASCII.
    bool beganInAscii()
    {
        wordBegin_ = std::max(wordBegin_, itemBegin_);
        while (wordBegin_ < at_ && !isWordCharacter(text_[wordBegin_]) && text_[wordBegin_] != '%')
            ++wordBegin_;
        return wordBegin_ < at_ && !characters::is(text_[wordBegin_], characters::nonAscii);
    }

    static bool isWordCharacter(char c)
    {
        return characters::is(c, characters::letter | characters::digit | characters::nonAscii);
    }

    static bool isPunctuation(char c)
    {
        return !isWordCharacter(c) && !characters::is(c, characters::blank) && c != '"' && c != '\'' &&
               c != '`' && c != '\\';
    }

    // Deeper nesting than this is no link that anybody wrote.
    static constexpr std::size_t deepest = 125;

    std::string_view text_;
    std::size_t begin_;
    std::size_t at_;
    std::size_t safe_; // Behind what belongs to the link for certain.
    std::size_t query_ = nowhere;
    std::size_t fragment_ = nowhere;
    std::size_t itemBegin_ = 0; // Of the name or value that is being read.
    std::size_t wordBegin_ = 0; // Its first letter, digit or escape.
    std::size_t runBegin_ = 0;  // Of the last stretch of plain characters.
    std::size_t safeBeforeRun_ = 0;
    std::size_t safeAtDoubt_ = nowhere;   // Before what belongs to the item only if another item follows.
    std::size_t safeAtBracket_ = nowhere; // Before the outermost open bracket.
    std::size_t depth_ = 0;
    const LinkSurroundings &around_;
    Part part_ = Part::path;
    bool isWeb_;
    bool isFirstItem_ = true; // Of the query.
    bool endsAtBracket_ = false;
    bool goesOn_ = false;
    std::array<char32_t, deepest> open_; // Only the first `depth_` have a value.
};

// Most links hold nothing that needs thought. Their end is the end of the word, without the punctuation
// there.
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
    const std::size_t separator = tail.find('&', query);
    if (separator != nowhere && tail.substr(separator + 1).starts_with('&'))
        return std::nullopt; // Perhaps a shell's.
    return LinkTail{end, begin + query, begin + fragment};
}

} // namespace

LinkTail webTail(std::string_view text, std::size_t begin, const LinkSurroundings &around)
{
    if (around.areEmpty()) {
        if (const auto tail = plainTail(text, begin))
            return *tail;
    }
    return TailScanner(text, begin, around, TailScanner::Kind::web).scan();
}

LinkTail otherTail(std::string_view text, std::size_t begin, const LinkSurroundings &around)
{
    return TailScanner(text, begin, around, TailScanner::Kind::other).scan();
}

} // namespace velmora
