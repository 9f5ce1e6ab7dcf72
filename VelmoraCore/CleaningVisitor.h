#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace velmora {

// Is told what a cleaning does while it goes on, link by link in the order of the text: first the removed
// parameters of a link, then the link. All views end with the call.
class CleaningVisitor {
public:
    virtual ~CleaningVisitor() = default;

    // Name and value as in `RemovedQueryItem`.
    virtual void visitRemovedItem(std::string_view name, std::optional<std::string_view> value) = 0;

    // The `length` bytes from `offset` of the text now read `replacement`.
    virtual void visitCleanedLink(std::size_t offset, std::size_t length, std::string_view replacement) = 0;
};

} // namespace velmora
