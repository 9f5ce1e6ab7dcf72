#pragma once

#include <QByteArray>
#include <QStringList>

// Words put into every place of a copied text, to be searched for in everything that is sent.
namespace TelemetryMarks {

// A text with a tracked link and a mark in each of its parts; the name of the removed parameter is one too.
[[nodiscard]] QByteArray copiedText(int number);

// The marks found in `bytes`: plain in any case, in hexadecimal digits or in Base64.
[[nodiscard]] QStringList in(const QByteArray &bytes);

} // namespace TelemetryMarks
