#pragma once

#include <VelmoraCore/QueryItem.h>
#include <VelmoraCore/Text/ByteSearch.h>

#include <cstddef>
#include <string_view>

namespace velmora {

// Walks the items of a query in their order. An empty query has none; an empty piece is an item with an empty
// name and no value.
class QueryItemReader {
public:
    explicit QueryItemReader(std::string_view query);

    // False after the last item.
    bool next(QueryItem &item);

    bool isAtEnd() const { return atEnd_; }

private:
    std::string_view query_;
    SeparatorMarks separators_;
    std::size_t position_ = 0;
    std::size_t coded_; // The first byte from the position on that needs decoding.
    bool atEnd_;
};

} // namespace velmora
