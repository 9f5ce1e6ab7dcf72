#include "CopiedText.h"

#include <VelmoraCore/Text/Utf8.h>

#include <algorithm>

namespace {

constexpr char16_t escapedByte = 0xDC00;          // Plus the byte, which is 0x80 at least.
constexpr QChar beginningMark = char16_t(0xDC00); // Behind it stands how many bytes the whole text has.

bool isEscapedByte(QStringView text, qsizetype at)
{
    const char16_t unit = text[at].unicode();
    return unit >= escapedByte + 0x80 && unit <= escapedByte + 0xFF &&
           (at == 0 || !text[at - 1].isHighSurrogate());
}

} // namespace

QString textFromBytes(std::string_view bytes)
{
    QString text;
    text.reserve(static_cast<qsizetype>(bytes.size()));
    std::size_t begin = 0; // Of the valid part that is not appended yet.
    std::size_t at = 0;
    const auto appendValid = [&] {
        text += QString::fromUtf8(bytes.data() + begin, static_cast<qsizetype>(at - begin));
    };
    while (at < bytes.size()) {
        const auto [value, length] = velmora::utf8::decode(bytes, at);
        if (value != velmora::utf8::illFormed) {
            at += length;
            continue;
        }
        appendValid();
        text += QChar(char16_t(escapedByte + static_cast<unsigned char>(bytes[at])));
        begin = ++at;
    }
    if (begin == 0) // The usual case: no copy of the long string.
        return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    appendValid();
    return text;
}

std::string bytesFromText(QStringView text)
{
    std::string bytes;
    qsizetype begin = 0;
    const auto appendPlain = [&](qsizetype end) {
        const QByteArray plain = text.sliced(begin, end - begin).toUtf8();
        bytes.append(plain.constData(), static_cast<std::size_t>(plain.size()));
    };
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (!isEscapedByte(text, at))
            continue;
        appendPlain(at);
        bytes += static_cast<char>(text[at].unicode() - escapedByte);
        begin = at + 1;
    }
    appendPlain(text.size());
    return bytes;
}

CopiedText CopiedText::from(std::string_view bytes, std::size_t limit, std::size_t beginning)
{
    if (bytes.size() <= limit)
        return {textFromBytes(bytes), 0};
    std::size_t end = std::min(beginning, bytes.size());
    // Not in the middle of a character, which has three bytes more than its first at most.
    for (int step = 0; step < 3 && end > 0 && velmora::utf8::isContinuation(bytes, end); ++step)
        --end;
    return {textFromBytes(bytes.substr(0, end)), static_cast<qint64>(bytes.size())};
}

void CopiedText::shorten(std::size_t limit, std::size_t beginning)
{
    const std::size_t most = wholeBytes == 0 ? limit : beginning;
    const std::string bytes = bytesFromText(text);
    if (bytes.size() <= most)
        return;
    const qint64 whole = wholeBytes == 0 ? static_cast<qint64>(bytes.size()) : wholeBytes;
    *this = from(bytes, 0, beginning);
    wholeBytes = whole;
}

QString markedText(const CopiedText &text)
{
    return text.wholeBytes == 0 ? text.text : text.text + beginningMark + QString::number(text.wholeBytes);
}

CopiedText textFromMarked(const QString &marked)
{
    const qsizetype mark = marked.lastIndexOf(beginningMark);
    const bool isPartOfCharacter = mark > 0 && marked[mark - 1].isHighSurrogate();
    if (mark < 0 || isPartOfCharacter)
        return {marked, 0};
    bool isNumber = false;
    const qint64 wholeBytes = QStringView(marked).sliced(mark + 1).toLongLong(&isNumber);
    return isNumber && wholeBytes > 0 ? CopiedText{marked.first(mark), wholeBytes} : CopiedText{marked, 0};
}
