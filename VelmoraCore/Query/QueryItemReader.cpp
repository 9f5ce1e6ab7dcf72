#include <VelmoraCore/Query/QueryItemReader.h>

namespace velmora {

QueryItemReader::QueryItemReader(std::string_view query)
    : query_(query)
    , separators_(query, 0)
    , coded_(findCoded(query, 0))
    , atEnd_(query.empty())
{
}

bool QueryItemReader::next(QueryItem &item)
{
    if (atEnd_)
        return false;
    const std::size_t begin = position_;
    std::size_t end = separators_.next();
    item.name = query_.substr(begin, end - begin);
    item.value.reset();
    if (end < query_.size() && query_[end] == '=') {
        const std::size_t value = end + 1;
        do
            end = separators_.next();
        while (end < query_.size() && query_[end] == '=');
        item.value = query_.substr(value, end - value);
    }
    item.plain = coded_ >= end;
    if (!item.plain)
        coded_ = findCoded(query_, end);
    atEnd_ = end == query_.size();
    position_ = end + 1;
    return true;
}

} // namespace velmora
