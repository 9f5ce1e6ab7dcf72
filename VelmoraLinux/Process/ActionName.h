#pragma once

#include <VelmoraPlatform/ApplicationInstance.h>

#include <optional>
#include <string_view>

// The names of the application's actions: in its desktop entry, on the bus, and with "--" before them on the
// command line.
namespace ActionName {

[[nodiscard]] std::string_view of(ApplicationInstance::Action action);
[[nodiscard]] std::optional<ApplicationInstance::Action> parse(std::string_view name);

} // namespace ActionName
