#include <VelmoraCore/Detection/LinkProperties.h>
#include <VelmoraCore/Detection/LinkScanner.h>
#include <VelmoraCore/Detection/LinkTail.h>
#include <VelmoraCore/Detection/Schemes.h>
#include <VelmoraCore/Hosts/HostLabels.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/Utf8.h>

#include <algorithm>

namespace velmora {

namespace {

// A question mark behind a host without anything like a parameter behind it may be an operator of a
// programming language: "row.id?pk:0".
bool mayBeCode(std::string_view query)
{
    return query.find('=') == std::string_view::npos;
}

bool isQuote(char c)
{
    return c == '"' || c == '\'' || c == '`';
}

} // namespace

// A stretch of host characters and dots, as long as it goes.
struct LinkScanner::Run {
    std::size_t begin;
    std::size_t end;
    bool hasDot;
};

struct LinkScanner::Authority {
    std::size_t hostBegin;
    std::size_t hostEnd;
    std::size_t end; // Behind the port, or behind the dot that a longer link takes in.
    bool valid;
};

bool LinkScanner::next(FoundLink &link)
{
    while (position_ < text_.size()) {
        const char c = text_[position_];
        if (characters::is(c, characters::host | characters::dot | characters::nonAscii)) {
            const Run run = hostRunFrom(position_);
            if (run.end == run.begin) {
                position_ = run.end + utf8::decode(text_, run.end).length;
                continue;
            }
            position_ = run.end;
            if (linkAt(run, link))
                return finish(link);
        } else {
            const std::size_t here = position_++;
            if (c == '@' && mailLink(here, link))
                return finish(link);
        }
    }
    return false;
}

bool LinkScanner::finish(FoundLink &link)
{
    link.previousEnd = previousEnd_;
    previousEnd_ = link.end;
    position_ = std::max(link.end, skipped_);
    floor_ = position_;
    return true;
}

// The rest of the word from `from` on, or of the quotes that begin before `begin`, holds no links.
void LinkScanner::skipWord(std::size_t begin, std::size_t from)
{
    skipped_ = findBlank(text_, from);
    if (begin > 0 && isQuote(text_[begin - 1]))
        skipped_ = std::min(skipped_, text_.substr(0, skipped_).find(text_[begin - 1], from));
    position_ = skipped_;
    floor_ = skipped_;
}

bool LinkScanner::linkAt(const Run &run, FoundLink &link)
{
    if (at(run.end) == ':') {
        if (at(run.end + 1) == '/' && at(run.end + 2) == '/')
            return schemeLink(run, link);
        if (labelledLink(run, link))
            return true;
    }
    return run.hasDot && bareLink(run, link);
}

// A full stop of East Asian scripts is a dot where a host has no other; beside an ASCII dot it ends a
// sentence.
LinkScanner::Run LinkScanner::hostRunFrom(std::size_t begin) const
{
    Run run{begin, begin, false};
    std::size_t end = begin;
    bool asciiDot = false;
    std::size_t behindFullStop = 0;
    while (end < text_.size()) {
        const char c = text_[end];
        if (characters::is(c, characters::host)) {
            do
                ++end;
            while (end < text_.size() && characters::is(text_[end], characters::host));
        } else if (c == '.') {
            if (behindFullStop != 0)
                run.begin = behindFullStop;
            behindFullStop = 0;
            asciiDot = true;
            run.hasDot = true;
            ++end;
        } else if (characters::is(c, characters::nonAscii)) {
            const utf8::CodePoint point = utf8::decode(text_, end);
            if (isIdeographicDot(point.value)) {
                if (asciiDot)
                    break;
                run.hasDot = true;
                behindFullStop = end + point.length;
            } else if (!isHostCodePoint(point.value)) {
                break;
            }
            end += point.length;
        } else {
            break;
        }
    }
    run.end = end;
    return run;
}

bool LinkScanner::schemeLink(const Run &run, FoundLink &link)
{
    std::size_t begin = run.end;
    while (begin > floor_ && characters::is(text_[begin - 1], characters::scheme))
        --begin;
    // Behind a backslash the scheme begins after the letters of an escape, as in "\nhttps://".
    if (begin > floor_ && text_[begin - 1] == '\\')
        begin = std::max(begin, run.end - httpSuffix(text_.substr(begin, run.end - begin)));
    while (begin < run.end && !characters::is(text_[begin], characters::letter))
        ++begin;
    const std::size_t behind = run.end + 3;
    if (begin == run.end) {
        position_ = behind;
        return false;
    }
    link.begin = begin;
    return isHttp(text_.substr(begin, run.end - begin)) ? webLink(behind, link) : otherLink(behind, link);
}

bool LinkScanner::webLink(std::size_t authorityBegin, FoundLink &link)
{
    const Authority authority = authorityFrom(authorityBegin);
    link.kind = FoundLink::Kind::web;
    link.hostBegin = authority.hostBegin;
    link.hostEnd = authority.hostEnd;
    link.keptAsWritten = false;
    if (!authority.valid) {
        // Nothing in the rest of a broken link is a link either.
        scanTail(authority.end, link);
        position_ = std::max(link.end, authorityBegin);
        floor_ = position_;
        return false;
    }
    scanTailOfWebLink(authority.end, link);
    return true;
}

// The tail of a web link, if it has one, behind its host and port.
void LinkScanner::scanTailOfWebLink(std::size_t begin, FoundLink &link) const
{
    link.end = begin;
    if (startsTail(begin))
        scanTail(begin, link);
    if (link.end != begin)
        return;
    // With nothing but punctuation behind them a lone colon and the dot of the root are punctuation too.
    if (text_[link.end - 1] == ':')
        --link.end;
    if (text_[link.end - 1] == '.')
        --link.end;
    link.hostEnd = std::min(link.hostEnd, link.end);
    link.query = link.fragment = link.end;
}

bool LinkScanner::otherLink(std::size_t tailBegin, FoundLink &link)
{
    link.kind = FoundLink::Kind::other;
    link.end = otherTail(text_, tailBegin, surroundingsBefore(text_, link.begin, previousEnd_)).end;
    link.query = link.fragment = link.end;
    if (link.end == tailBegin) {
        position_ = tailBegin;
        return false;
    }
    skipWord(link.begin, link.end);
    return true;
}

// "mailto:" and its like. Before a quote the word is a key of source text.
bool LinkScanner::labelledLink(const Run &run, FoundLink &link)
{
    std::size_t begin = run.end;
    while (begin > floor_ && characters::is(text_[begin - 1], characters::scheme))
        --begin;
    const std::string_view word = text_.substr(begin, run.end - begin);
    const std::size_t tailBegin = run.end + 1;
    if (!isSchemeWithoutSlashes(word) || isQuote(at(tailBegin)))
        return false;
    link.begin = begin;
    if (characters::equalsIgnoringCase(word, "mailto") && at(tailBegin) != '?')
        return mailtoLink(tailBegin, link);
    return otherLink(tailBegin, link);
}

// The link ends behind its first address, as the standard has it, or behind that one's query.
bool LinkScanner::mailtoLink(std::size_t addressBegin, FoundLink &link)
{
    const std::size_t begin = link.begin;
    const std::size_t floor = floor_;
    const std::size_t wordEnd = findBlank(text_, addressBegin);
    const std::size_t mark = std::min(text_.substr(0, wordEnd).find('@', addressBegin), wordEnd);
    const bool found = mark < wordEnd && mailLink(mark, link) && link.begin == begin;
    floor_ = floor;
    skipWord(begin, found ? link.end : addressBegin);
    return found;
}

bool LinkScanner::startsTail(std::size_t position) const
{
    const char c = at(position);
    return c == '/' || c == '?' || c == '#';
}

void LinkScanner::scanTail(std::size_t begin, FoundLink &link) const
{
    const LinkTail tail = webTail(text_, begin, surroundingsBefore(text_, link.begin, previousEnd_));
    link.end = tail.end;
    link.query = tail.query;
    link.fragment = tail.fragment;
    link.keptAsWritten = tail.goesOn;
}

LinkScanner::Authority LinkScanner::authorityFrom(std::size_t begin) const
{
    Authority authority{begin, begin, begin, false};
    if (hostAt(begin, authority) && !characters::is(at(authority.end), characters::user | characters::dot) &&
        at(authority.end) != '@')
        return authority;
    // What looked like a host and a port may be a user and a password.
    std::size_t behindUser = begin;
    for (std::size_t i = begin; i < text_.size(); ++i) {
        const char c = text_[i];
        if (c == '@')
            behindUser = i + 1;
        else if (!characters::is(c, characters::user))
            break;
    }
    if (behindUser != begin)
        hostAt(behindUser, authority);
    return authority;
}

bool LinkScanner::hostAt(std::size_t begin, Authority &authority) const
{
    authority = {begin, begin, begin, false};
    if (at(begin) == '[') {
        std::size_t close = begin + 1;
        while (characters::is(at(close), characters::literal) || at(close) == '%')
            ++close;
        if (at(close) != ']' || close == begin + 1)
            return false;
        authority.hostEnd = authority.end = close + 1;
    } else {
        const HostExtent extent = hostExtent(text_, begin);
        authority.hostEnd = authority.end = extent.end;
        if (!extent.valid)
            return false;
        // The dot of the root belongs to the host when the link goes on behind it.
        if (at(extent.end) == '.' && (startsTail(extent.end + 1) || at(extent.end + 1) == ':')) {
            authority.hostEnd = authority.end = extent.end + 1;
            scanPort(authority);
            if (!startsTail(authority.end) && authority.end == authority.hostEnd)
                authority.hostEnd = authority.end = extent.end;
            authority.valid = true;
            return true;
        }
    }
    authority.valid = true;
    scanPort(authority);
    return true;
}

// A port has digits behind its colon; without digits it belongs to the link only when the link goes on.
void LinkScanner::scanPort(Authority &authority) const
{
    if (at(authority.end) != ':')
        return;
    std::size_t end = authority.end + 1;
    while (characters::is(at(end), characters::digit))
        ++end;
    const bool hasDigits = end > authority.end + 1;
    if (startsTail(end) || (hasDigits && !characters::is(at(end), characters::host)))
        authority.end = end;
}

bool LinkScanner::mayPrecedeBareHost(std::size_t begin) const
{
    if (begin == 0)
        return true;
    if (begin == floor_)
        return text_[begin - 1] != '@';
    switch (text_[begin - 1]) {
    case '@':
    case '/':
    case '\\':
    case '%':
    case '+':
        return false;
    case ':': {
        std::size_t scheme = begin - 1;
        while (scheme > floor_ && begin - scheme < 8 && characters::is(text_[scheme - 1], characters::scheme))
            --scheme;
        return !isHttp(text_.substr(scheme, begin - 1 - scheme));
    }
    default:
        return true;
    }
}

bool LinkScanner::isPartOfMailbox(std::size_t position)
{
    if (mailboxEnd_ < position) {
        mailboxEnd_ = position;
        while (mailboxEnd_ < text_.size()) {
            const char c = text_[mailboxEnd_];
            if (characters::is(c, characters::nonAscii)) {
                const utf8::CodePoint point = utf8::decode(text_, mailboxEnd_);
                if (!linkEmail(point.value))
                    break;
                mailboxEnd_ += point.length;
            } else if (characters::is(c, characters::mailbox) && !startsTail(mailboxEnd_)) {
                ++mailboxEnd_;
            } else {
                break;
            }
        }
    }
    return at(mailboxEnd_) == '@';
}

bool LinkScanner::bareLink(const Run &run, FoundLink &link)
{
    const BareHost host = bareHost(text_, run.begin, run.end);
    if (!host.valid)
        return false;
    link.kind = FoundLink::Kind::bareWeb;
    link.keptAsWritten = false;
    link.begin = host.begin;
    link.hostBegin = link.begin;
    link.hostEnd = host.end;
    if (!mayPrecedeBareHost(run.begin) || isPartOfMailbox(run.end))
        return false;
    Authority authority{link.hostBegin, link.hostEnd, link.hostEnd, true};
    // One dot of the root may stand between the host and the rest of the link.
    const bool rootDot = run.end == link.hostEnd + 1 && at(link.hostEnd) == '.';
    if (run.end == link.hostEnd || rootDot) {
        authority.end = run.end;
        scanPort(authority);
        if (startsTail(authority.end) || authority.end != run.end)
            link.hostEnd = run.end;
        else
            authority.end = link.hostEnd;
    }
    scanTailOfWebLink(authority.end, link);
    if (link.query == authority.end && mayBeCode(text_.substr(link.query, link.fragment - link.query)))
        link.keptAsWritten = true;
    return !host.looksLikeFile || (link.end > authority.end && text_[authority.end] == '/');
}

// The local part stands before the "@": no dot at its ends, no two in a row.
bool LinkScanner::mailLink(std::size_t mark, FoundLink &link)
{
    std::size_t begin = mark;
    while (begin > floor_) {
        const char c = text_[begin - 1];
        if (characters::is(c, characters::mailbox)) {
            --begin;
            continue;
        }
        if (!characters::is(c, characters::nonAscii))
            break;
        const utf8::CodePoint point = utf8::decodeBefore(text_, begin, floor_);
        if (!linkEmail(point.value))
            break;
        begin -= point.length;
    }
    floor_ = mark + 1;
    const std::string_view local = text_.substr(begin, mark - begin);
    if (local.empty() || local.front() == '.' || local.back() == '.' ||
        local.find("..") != std::string_view::npos)
        return false;
    const Run run = hostRunFrom(mark + 1);
    const BareHost host = bareHost(text_, run.begin, run.end);
    if (run.begin != mark + 1 || !host.valid || host.begin != run.begin)
        return false;
    constexpr std::string_view scheme = "mailto:";
    link.kind = FoundLink::Kind::mail;
    link.begin = begin;
    link.end = host.end;
    link.query = link.fragment = link.end;
    // What ends in "mailto:" may also be the host of the link before.
    if (begin - previousEnd_ >= scheme.size() &&
        characters::equalsIgnoringCase(text_.substr(begin - scheme.size(), scheme.size()), scheme)) {
        link.kind = FoundLink::Kind::other;
        link.begin = begin - scheme.size();
        if (at(link.end) == '?')
            link.end = otherTail(text_, link.end, surroundingsBefore(text_, link.begin, previousEnd_)).end;
        link.query = link.fragment = link.end;
    }
    return true;
}

} // namespace velmora
