#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velmora {

// A link found in a text; all positions are byte offsets into that text.
struct FoundLink {
    enum class Kind : std::uint8_t {
        web,     // http or https, with its scheme.
        bareWeb, // A web link written without its scheme.
        mail,    // An e-mail address written without its scheme.
        other,   // Any other scheme.
    };

    Kind kind = Kind::web;
    std::size_t begin = 0;
    std::size_t end = 0;
    // Of web links.
    std::size_t hostBegin = 0;
    std::size_t hostEnd = 0;
    // Where the query's "?" stands, `fragment` without one, and the fragment's "#", `end` without one. Of web
    // links.
    std::size_t query = 0;
    std::size_t fragment = 0;
    // Never to be changed: what looks like its query may be code, or more of it follows behind its end in the
    // spelling of the language around it.
    bool keptAsWritten = false;
    // Where the link before ended; nothing up to there belongs to this one's surroundings.
    std::size_t previousEnd = 0;

    static constexpr std::string_view webScheme = "http://";

    bool isWeb() const { return kind == Kind::web || kind == Kind::bareWeb; }

    // Whether it has a query that may be changed.
    bool mayBeCleaned() const { return isWeb() && !keptAsWritten && query != fragment; }

    // What the link was written without and has to begin with anywhere else.
    std::string_view suppliedScheme() const
    {
        if (kind == Kind::bareWeb)
            return webScheme;
        return kind == Kind::mail ? "mailto:" : "";
    }
};

// Finds links in running text, from left to right, in time linear to the text.
//
// The rules are those of Unicode's link detection standard, with these decisions of our own, in order of
// precedence:
// - "<" and ">" end every link, as white space and controls do.
// - A web link that ends early costs at most a tracker, one that ends late costs the user's text: `webTail` says what
//   else ends one.
// - Links with a scheme may have a user, a port, a name that is no known domain or holds symbols, an IP
//   address.
// - Without a scheme a host needs a known top-level domain, or has to begin with "www.". In prose of a script
//   without blanks it begins where its first label changes to ASCII.
// - Links of other schemes are found, and nothing in the rest of their word is a link.
class LinkScanner {
public:
    explicit LinkScanner(std::string_view text)
        : LinkScanner(text, 0, text.size())
    {
    }

    // Looks at the bytes from `begin` to before `end` only. This gives the links that a scan of the whole
    // text gives there if a blank, a control, "<" or ">" stands on both sides.
    LinkScanner(std::string_view text, std::size_t begin, std::size_t end)
        : text_(text.substr(0, end))
        , position_(begin)
        , floor_(begin)
    {
    }

    // False after the last link.
    bool next(FoundLink &link);

private:
    struct Run;
    struct Authority;

    bool linkAt(const Run &run, FoundLink &link);
    bool schemeLink(const Run &run, FoundLink &link);
    bool webLink(std::size_t authorityBegin, FoundLink &link);
    bool otherLink(std::size_t tailBegin, FoundLink &link);
    bool labelledLink(const Run &run, FoundLink &link);
    bool bareLink(const Run &run, FoundLink &link);
    bool mailLink(std::size_t mark, FoundLink &link);

    Run hostRunFrom(std::size_t begin) const;
    Authority authorityFrom(std::size_t begin) const;
    bool hostAt(std::size_t begin, Authority &authority) const;
    bool mailtoLink(std::size_t addressBegin, FoundLink &link);
    void scanTail(std::size_t begin, FoundLink &link) const;
    void scanTailOfWebLink(std::size_t begin, FoundLink &link) const;
    void skipWord(std::size_t begin, std::size_t from);
    void scanPort(Authority &authority) const;
    bool startsTail(std::size_t position) const;
    bool isPartOfMailbox(std::size_t position);
    bool mayPrecedeBareHost(std::size_t begin) const;
    bool finish(FoundLink &link);

    char at(std::size_t position) const { return position < text_.size() ? text_[position] : '\0'; }

    std::string_view text_;
    std::size_t position_;
    // Nothing before this belongs to a further link.
    std::size_t floor_;
    std::size_t previousEnd_ = 0; // Of the last link that was found.
    // Nothing before this is looked at: the rest of a word that a link of another scheme takes up.
    std::size_t skipped_ = 0;
    // What the last look ahead for an "@" found, so that no stretch of text is looked at twice.
    std::size_t mailboxEnd_ = 0;
};

} // namespace velmora
