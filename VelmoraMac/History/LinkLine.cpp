#include "LinkLine.h"

#include <VelmoraMac/Texts/RemovedParts.h>

#include <QFontMetricsF>
#include <QGuiApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostShown = 600; // Characters at each end: laying out more must not cost time.
constexpr QChar ellipsis = u'\u2026';

QString oneLine(const QString &text)
{
    QString line = text;
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return c.isSpace(); }, u' ');
    return line;
}

QString shortened(const QString &text)
{
    return text.size() <= 2 * mostShown ? text : text.left(mostShown) + ellipsis + text.right(mostShown);
}

struct Cut {
    qsizetype head = 0; // Characters before the ellipsis,
    qsizetype tail = 0; // and after it. Together all of them when nothing is cut.
};

Cut cut(const QString &text, const QString &other, double width, const QFontMetricsF &metrics)
{
    const QString whole = shortened(text);
    if (whole.size() == text.size() && metrics.horizontalAdvance(text) <= width)
        return {text.size(), 0};
    const QString atEnd = metrics.elidedText(whole, Qt::ElideRight, width);
    if (atEnd != metrics.elidedText(shortened(other), Qt::ElideRight, width))
        return {atEnd.size() - 1, 0};
    const QString inMiddle = metrics.elidedText(whole, Qt::ElideMiddle, width);
    qsizetype head = 0;
    while (head < inMiddle.size() && head < text.size() && inMiddle[head] == text[head])
        ++head;
    return {head, std::max<qsizetype>(0, inMiddle.size() - head - 1)};
}

// The characters of `text` from `start` to `end`; those in `parts` tinted.
QString run(const QString &text, qsizetype start, qsizetype end, const QList<RemovedParts::Part> &parts,
            const QColor &tint)
{
    QString styled;
    qsizetype at = start;
    for (const auto &[from, length] : parts) {
        const qsizetype first = std::clamp(from, at, std::max(at, end));
        const qsizetype last = std::clamp(from + length, first, std::max(first, end));
        if (last == first)
            continue;
        styled += text.mid(at, first - at).toHtmlEscaped() + u"<font color=\"%1\">"_s.arg(tint.name()) +
                  text.mid(first, last - first).toHtmlEscaped() + u"</font>"_s;
        at = last;
    }
    return styled + text.mid(at, end - at).toHtmlEscaped();
}

} // namespace

QString LinkLine::styled(const QString &text, const QString &other, double width, int pixelSize, int weight,
                         const QColor &tint)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(pixelSize);
    font.setWeight(static_cast<QFont::Weight>(weight));
    const QString line = oneLine(text);
    const auto parts = tint.isValid() && tint.alpha() > 0 ? RemovedParts::in(line, oneLine(other))
                                                          : QList<RemovedParts::Part>();
    const auto [head, tail] = cut(line, oneLine(other), width, QFontMetricsF(font));
    QString styled = run(line, 0, head, parts, tint);
    if (head + tail < line.size())
        styled += ellipsis + run(line, line.size() - tail, line.size(), parts, tint);
    return styled;
}
