#pragma once

#include <QString>
#include <QStringView>
#include <QtGlobal>

#include <cstddef>
#include <string>
#include <string_view>

// Copied text in the application's text form.
//
// Bytes that are not valid UTF-8 become the code units U+DC80 to U+DCFF, which stand in no text otherwise, so
// every text can be written back byte for byte.
struct CopiedText {
    QString text;
    // How many bytes the whole text has when `text` is only its beginning; else 0.
    qint64 wholeBytes = 0;

    // Whole when it has at most `limit` bytes, else as many characters of its beginning as fit into `beginning`
    // bytes.
    [[nodiscard]] static CopiedText from(std::string_view bytes, std::size_t limit, std::size_t beginning);
    // The same for a text that is in this form already; of a beginning at most `beginning` bytes are left.
    void shorten(std::size_t limit, std::size_t beginning);

    bool operator==(const CopiedText &) const = default;
};

[[nodiscard]] QString textFromBytes(std::string_view bytes);
[[nodiscard]] std::string bytesFromText(QStringView text);

// The text in one string: a beginning has a mark behind it, which stands in no text otherwise.
[[nodiscard]] QString markedText(const CopiedText &text);
[[nodiscard]] CopiedText textFromMarked(const QString &marked);
