#pragma once

#include <QString>

// Release notes written in HTML as plain text: paragraphs and list items on lines of their own, everything
// else reduced to its words. Scripts and styles are left out.
[[nodiscard]] QString plainNotes(QStringView html);
