#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Plain text as the clipboard names it: the targets of X11 selections and the MIME types of Wayland offers,
// which are the same names.
namespace PlainText {

// The mark by which password managers ask not to be read.
constexpr std::string_view secretMark = "x-kde-passwordManagerHint";

// How many names of an offer are looked at; real programs offer a few dozen.
constexpr std::size_t mostTargets = 256;

// Those of the offered names under which the plain text can be had, the best first: UTF-8 before text of a
// named or of an unnamed encoding, that before Latin-1.
[[nodiscard]] std::vector<std::string> targetsAmong(const std::vector<std::string> &offered);

// The text as UTF-8, given what the owner named as its type. Bytes that are meant to be UTF-8 stay what they
// are. Nothing when the type is no plain text, or in an encoding that is not known here.
[[nodiscard]] std::optional<std::string> decoded(std::string_view type, std::string bytes);

// Whether the content of the mark asks for secrecy. A mark without content does: some owners cannot serve it.
[[nodiscard]] bool isSecret(std::string_view markContent);

} // namespace PlainText
