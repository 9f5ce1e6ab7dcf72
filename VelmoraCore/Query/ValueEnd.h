#pragma once

#include <VelmoraCore/TextExtent.h>

#include <cstddef>
#include <string_view>

namespace velmora {

// Where the value from `value` to before `end`, the last one of a link that begins at `link`, certainly ends:
// before a separator of columns and lists, which the values of trackers hold in escaped form, and before what
// closes a comment, a tag or a formula. A link that is the whole text has nothing around it that could be the
// text's. Only what is deleted needs this.
std::size_t certainValueEnd(std::string_view text, TextExtent extent, std::size_t link, std::size_t value,
                            std::size_t end);

// Whether the text at `end` is the end of a quoted piece to which source text appends something.
bool isConcatenated(std::string_view text, std::size_t end);

// Whether the link whose query begins at `query` goes on in the next line of an encoded mail: "...=3Da=".
bool breaksQuotedPrintableLine(std::string_view text, std::size_t query, std::size_t end);

} // namespace velmora
