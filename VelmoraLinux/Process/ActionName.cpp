#include "ActionName.h"

#include <algorithm>
#include <array>

using Action = ApplicationInstance::Action;

namespace {

struct Named {
    Action action;
    std::string_view name;
};

constexpr std::array<Named, 5> names{{{Action::settings, "settings"},
                                      {Action::popover, "popover"},
                                      {Action::cleanLink, "clean"},
                                      {Action::pauseOrResume, "pause"},
                                      {Action::quit, "quit"}}};

} // namespace

std::string_view ActionName::of(Action action)
{
    const auto *const found = std::find_if(names.begin(), names.end(),
                                           [action](const Named &named) { return named.action == action; });
    return found->name;
}

std::optional<Action> ActionName::parse(std::string_view name)
{
    const auto *const found =
        std::find_if(names.begin(), names.end(), [name](const Named &named) { return named.name == name; });
    return found == names.end() ? std::nullopt : std::optional(found->action);
}
