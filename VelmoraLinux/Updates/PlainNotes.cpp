#include "PlainNotes.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

bool isOneOf(QStringView name, std::initializer_list<QStringView> names)
{
    return std::any_of(names.begin(), names.end(), [name](QStringView candidate) {
        return name.compare(candidate, Qt::CaseInsensitive) == 0;
    });
}

// "/p" for `</p>`, "li" for `<li class="new">`.
QStringView tagName(QStringView tag)
{
    qsizetype length = tag.startsWith(u'/') ? 1 : 0;
    while (length < tag.size() && tag[length].isLetterOrNumber())
        ++length;
    return tag.first(length);
}

QString decodedEntity(QStringView name)
{
    struct Entity {
        QStringView name;
        QStringView text;
    };

    static constexpr auto known = std::to_array<Entity>({{u"amp", u"&"},
                                                         {u"lt", u"<"},
                                                         {u"gt", u">"},
                                                         {u"quot", u"\""},
                                                         {u"apos", u"'"},
                                                         {u"nbsp", u"\u00a0"}});
    for (const Entity &entity : known) {
        if (name == entity.name)
            return entity.text.toString();
    }
    if (!name.startsWith(u'#'))
        return {};
    const bool isHex = name.size() > 1 && name[1].toLower() == u'x';
    const char32_t code = isHex ? name.sliced(2).toUInt(nullptr, 16) : name.sliced(1).toUInt();
    const bool isText = code >= 0x20 && code <= 0x10ffff && !QChar::isSurrogate(code);
    return isText ? QString::fromUcs4(&code, 1) : QString();
}

class Plain {
public:
    void tag(QStringView name)
    {
        if (isOneOf(name, {u"br"}))
            text_ += u'\n';
        else if (isOneOf(name, {u"li"}))
            startLine(u"• ");
        else if (isOneOf(name.startsWith(u'/') ? name.sliced(1) : name,
                         {u"p", u"div", u"ul", u"ol", u"h1", u"h2", u"h3", u"h4", u"h5", u"h6", u"tr"}))
            startLine({});
    }

    void character(QChar character)
    {
        const bool blank =
            character == u' ' || character == u'\n' || character == u'\t' || character == u'\r';
        if (!blank)
            text_ += character;
        else if (!text_.isEmpty() && !text_.back().isSpace())
            text_ += u' ';
    }

    void append(const QString &text) { text_ += text; }

    QString result() const { return text_.trimmed(); }

private:
    void startLine(QStringView bullet)
    {
        while (text_.endsWith(u' '))
            text_.chop(1);
        if (!text_.isEmpty() && !text_.endsWith(u'\n'))
            text_ += u'\n';
        text_ += bullet.toString();
    }

    QString text_;
};

// Where the text goes on behind the tag that begins at `open`; the whole element for those without words.
qsizetype behindTag(QStringView html, qsizetype open, QStringView name)
{
    qsizetype close = html.indexOf(u'>', open);
    if (isOneOf(name, {u"script", u"style"})) {
        const qsizetype end = html.indexOf(u"</"_s + name.toString(), open, Qt::CaseInsensitive);
        close = end < 0 ? -1 : html.indexOf(u'>', end);
    }
    return close < 0 ? html.size() : close + 1;
}

} // namespace

QString plainNotes(QStringView html)
{
    constexpr qsizetype longestEntity = 10;
    Plain plain;
    for (qsizetype at = 0; at < html.size();) {
        if (html[at] == u'<') {
            const QStringView name = tagName(html.sliced(at + 1));
            plain.tag(name);
            at = behindTag(html, at, name);
            continue;
        }
        if (html[at] == u'&') {
            const qsizetype end = html.sliced(at, std::min(longestEntity, html.size() - at)).indexOf(u';');
            const QString text = end > 1 ? decodedEntity(html.sliced(at + 1, end - 1)) : QString();
            if (!text.isEmpty()) {
                plain.append(text);
                at += end + 1;
                continue;
            }
        }
        plain.character(html[at++]);
    }
    return plain.result();
}
