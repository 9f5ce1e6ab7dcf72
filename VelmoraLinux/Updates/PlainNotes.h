#pragma once

#include <QString>

// Release notes written in HTML as plain text: paragraphs and list items on lines of their own, named and numeric
// character references resolved, all other tags removed. Scripts and styles are left out. Takes linear time.
[[nodiscard]] QString plainNotes(const QString &html);
