#include "PlainNotes.h"

#include <QRegularExpression>
#include <QTextDocumentFragment>

using namespace Qt::StringLiterals;

namespace {

QRegularExpression anyCase(const QString &pattern)
{
    return QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption |
                                           QRegularExpression::DotMatchesEverythingOption);
}

// The words of `html` with a line break for each tag that starts a line, and character references as they are.
QString withoutTags(QString html)
{
    html.replace(anyCase(u"<!--.*?(-->|$)"_s), {});
    html.replace(anyCase(u"<(script|style)\\b.*?(</\\1\\b[^>]*(>|$)|$)"_s), {});
    html.replace(QRegularExpression(u"[ \\t\\r\\n]+"_s), u" "_s);
    html.replace(anyCase(u" ?<br\\b[^>]*(>|$) ?"_s), u"\n"_s);
    html.replace(anyCase(u" ?<li\\b[^>]*(>|$) ?"_s), u"<p>• "_s);
    html.replace(anyCase(u"( ?</?(p|div|ul|ol|li|h[1-6]|tr|table|blockquote)\\b[^>]*(>|$) ?)+"_s), u"\n"_s);
    html.replace(QRegularExpression(u"<[^>]*(>|$)"_s), {});
    return html;
}

} // namespace

// Qt resolves the character references only. Its HTML parser is not given the tags: it takes more than linear
// time for nested ones, and reads the files that style sheets and images name.
QString plainNotes(const QString &html)
{
    const QString text = u"<p style='white-space:pre-wrap'>"_s + withoutTags(html);
    QString plain = QTextDocumentFragment::fromHtml(text).toPlainText();
    plain.removeIf([](QChar c) { return c.category() == QChar::Other_Control && c != u'\n'; });
    return QString::fromUtf8(plain.toUtf8()).trimmed(); // Replaces lone surrogates.
}
