#pragma once

#include <QString>

#include <set>
#include <string>

// The user's list of domains that are never cleaned, as typed: one entry per line. Only line breaks separate
// entries, and entries are not corrected: a scheme, a path or a comma stays part of the entry.
namespace IgnoredDomains {

// The entries, trimmed and in lower case, as UTF-8.
[[nodiscard]] std::set<std::string> hosts(const QString &text);
// How many lines hold more than white space.
[[nodiscard]] qsizetype lineCount(const QString &text);
// `text` with `host` on a line of its own at the end; directly behind it when `text` is only white space.
[[nodiscard]] QString appending(const QString &text, const QString &host);

} // namespace IgnoredDomains
