#include "RemovedParts.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestText = 100'000;

// A parameter or what is between two of them, without the character that begins it.
struct Token {
    qsizetype start = 0; // Of that character.
    QString body;
};

bool beginsParameter(QChar c)
{
    return c == u'?' || c == u'&' || c == u'#' || c.isSpace();
}

QList<Token> tokensOf(const QString &text)
{
    QList<Token> tokens;
    qsizetype start = 0;
    const auto take = [&](qsizetype end) {
        const bool hasMark = start < text.size() && beginsParameter(text[start]);
        const qsizetype body = start + (hasMark ? 1 : 0);
        tokens.append({start, QUrl::fromPercentEncoding(text.mid(body, end - body).toUtf8())});
        start = end;
    };
    for (qsizetype i = 1; i < text.size(); ++i)
        if (beginsParameter(text[i]))
            take(i);
    take(text.size());
    return tokens;
}

} // namespace

QList<RemovedParts::Part> RemovedParts::in(const QString &original, const QString &cleaned)
{
    if (original == cleaned || original.size() > longestText)
        return {};
    const QList<Token> before = tokensOf(original);
    const QList<Token> after = tokensOf(cleaned);
    QList<Part> parts;
    qsizetype next = 0;
    for (qsizetype i = 0; i < before.size(); ++i) {
        if (next < after.size() && before[i].body == after[next].body) {
            ++next;
            continue;
        }
        const qsizetype end = i + 1 < before.size() ? before[i + 1].start : original.size();
        if (!parts.isEmpty() && parts.last().start + parts.last().length == before[i].start)
            parts.last().length = end - parts.last().start;
        else
            parts.append({before[i].start, end - before[i].start});
    }
    return parts;
}
