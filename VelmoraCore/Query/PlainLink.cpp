#include <VelmoraCore/Hosts/HostLabels.h>
#include <VelmoraCore/Query/KeptItems.h>
#include <VelmoraCore/Query/PlainLink.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <algorithm>

namespace velmora {

namespace {

// The length of the scheme and slashes at the beginning of the word, 0 if they are not there.
std::size_t schemeLength(std::string_view word)
{
    for (const std::string_view scheme : {std::string_view("https://"), std::string_view("http://")}) {
        if (word.starts_with(scheme))
            return scheme.size();
    }
    return 0;
}

} // namespace

bool PlainLink::read(std::size_t word, std::size_t queryMark)
{
    begin_ = word;
    queryMark_ = queryMark;
    count_ = 0;
    if (!readHost())
        return false;
    LinkMarks marks(text_, hostEnd_);
    return readPath(marks) && readQuery(marks) && endsForCertain();
}

bool PlainLink::readHost()
{
    const std::size_t scheme = schemeLength(text_.substr(begin_));
    if (scheme == 0)
        return false;
    const HostExtent host = hostExtent(text_, begin_ + scheme);
    hostBegin_ = begin_ + scheme;
    hostEnd_ = host.end;
    return host.valid && (host.end == queryMark_ || text_[host.end] == '/');
}

bool PlainLink::readPath(LinkMarks &marks)
{
    std::size_t place = marks.next();
    while (place < queryMark_ && characters::is(text_[place], characters::pathMark))
        place = marks.next();
    return place == queryMark_;
}

bool PlainLink::readQuery(LinkMarks &marks)
{
    constexpr std::size_t nowhere = std::string_view::npos;
    std::size_t begin = queryMark_ + 1;
    std::size_t equals = nowhere;
    while (true) {
        const std::size_t place = marks.next();
        const char c = place < text_.size() ? text_[place] : '\n';
        if (c == '=' && equals == nowhere) {
            equals = place;
        } else if (c == '&' || characters::is(c, characters::blank)) {
            if (!addItem(begin, std::min(equals, place), place))
                return false;
            if (c != '&')
                return true;
            begin = place + 1;
            equals = nowhere;
        } else if (c != '?' && c != '$' && c != '~') {
            return false;
        }
    }
}

// False for what a shell or prose may have put there.
bool PlainLink::addItem(std::size_t begin, std::size_t nameEnd, std::size_t end)
{
    if (count_ == most || begin == end || characters::is(text_[end - 1], characters::soft))
        return false;
    items_[count_++] = {begin, nameEnd, end, false};
    end_ = end;
    return true;
}

// Whether the text behind the link says nothing about its last value.
bool PlainLink::endsForCertain() const
{
    const Item &last = items_[count_ - 1];
    return last.nameEnd == end_ || (last.nameEnd + 1 < end_ &&
                                    certainValueEnd(text_, extent_, begin_, last.nameEnd + 1, end_) == end_);
}

bool PlainLink::isTracked(const TrackingRules &rules)
{
    const LinkHost host(between(hostBegin_, hostEnd_));
    bool isTracked = false;
    for (std::size_t i = 0; i < count_; ++i) {
        Item &item = items_[i];
        const std::optional<bool> byName = rules.removesPlain(between(item.begin, item.nameEnd));
        item.isRemoved = byName ? *byName : rules.removes(queryItem(item), host);
        isTracked = isTracked || item.isRemoved;
    }
    return isTracked && !rules.ignores(host);
}

void PlainLink::rewrite(std::size_t from, std::string &output, CleaningVisitor *visitor) const
{
    // What stays is copied in stretches, with the separators between.
    std::size_t end = queryMark_;
    bool isFirst = true;
    for (std::size_t i = 0; i < count_; ++i) {
        const Item &item = items_[i];
        if (item.isRemoved && visitor != nullptr) {
            const QueryItem removed = queryItem(item);
            visitor->visitRemovedItem(removed.name, removed.value);
        }
        if (item.isRemoved || (!isFirst && isRepetition(item)))
            continue;
        if (end != item.begin - 1) {
            output.append(text_, from, end - from);
            from = item.begin - 1;
            if (isFirst) {
                output.push_back('?');
                ++from;
            }
        }
        isFirst = false;
        end = item.end;
    }
    output.append(text_, from, end - from);
}

QueryItem PlainLink::queryItem(const Item &item) const
{
    QueryItem result{between(item.begin, item.nameEnd), std::nullopt, true};
    if (item.nameEnd < item.end)
        result.value = between(item.nameEnd + 1, item.end);
    return result;
}

bool PlainLink::isRepetition(const Item &item) const
{
    const QueryItem repeated = queryItem(item);
    return std::any_of(items_.data(), &item, [&](const Item &other) {
        return !other.isRemoved && isSamePlain(queryItem(other), repeated);
    });
}

} // namespace velmora
