#pragma once

#include <optional>
#include <string>
#include <string_view>

// The host that somebody means who writes a host, "*." and a host, a URL, or the beginning of one without its
// scheme. Nothing when no host can be made out.
std::optional<std::string> ignoredHost(std::string_view written);
