#pragma once

namespace velmora {

// Whether a text is all there is or a piece of a longer one. In a whole text that is one link, nothing can belong to
// anything but the link.
enum class TextExtent { whole, piece };

} // namespace velmora
