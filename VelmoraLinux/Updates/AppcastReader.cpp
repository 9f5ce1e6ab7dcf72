#include "AppcastReader.h"

#include "PlainNotes.h"

#include <QLocale>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView updateNamespace = u"http://www.andymatuschak.org/xml-namespaces/sparkle";
constexpr QStringView ownNamespace = u"https://velmora.app/xml-namespaces/updates";
constexpr int maximumDepth = 16;
constexpr qsizetype maximumItems = 1000;
constexpr qsizetype maximumText = qsizetype{128} * 1024; // Characters of one element.

bool isWebAddress(const QUrl &url)
{
    return url.isValid() && !url.host().isEmpty() && (url.scheme() == u"https" || url.scheme() == u"http");
}

QUrl webAddress(const QString &text)
{
    const QUrl url(text.trimmed(), QUrl::TolerantMode);
    return isWebAddress(url) ? url : QUrl();
}

// For feeds without a version element: "Velmora_1.2.tar.gz" is version 1.2.
QString versionFromFileName(const QUrl &url)
{
    QString name = url.fileName();
    for (const QStringView ending : {u".gz", u".xz", u".tar", u".AppImage", u".zip"}) {
        if (name.endsWith(ending))
            name.chop(ending.size());
    }
    const qsizetype underscore = name.lastIndexOf(u'_');
    return underscore < 0 ? QString() : name.mid(underscore + 1);
}

struct TextField {
    QStringView name;
    QString AppcastItem::*field;
};

constexpr auto textFields = std::to_array<TextField>({
    {u"version", &AppcastItem::version},
    {u"shortVersionString", &AppcastItem::shownVersion},
    {u"minimumSystemVersion", &AppcastItem::minimumSystem},
    {u"maximumSystemVersion", &AppcastItem::maximumSystem},
    {u"channel", &AppcastItem::channel},
    {u"ignoreSkippedUpgradesBelowVersion", &AppcastItem::ignoreSkippedBelow},
});

} // namespace

AppcastReader::AppcastReader(const QByteArray &feed)
    : xml_(feed)
{
    xml_.setEntityExpansionLimit(0);
}

std::optional<Appcast> AppcastReader::read(const QByteArray &feed, QString *problem)
{
    if (feed.size() > maximumBytes) {
        if (problem != nullptr)
            *problem = u"larger than %1 bytes"_s.arg(maximumBytes);
        return std::nullopt;
    }
    AppcastReader reader(feed);
    reader.readDocument();
    if (!reader.xml_.hasError())
        return std::move(reader.items_);
    if (problem != nullptr)
        *problem = u"line %1: %2"_s.arg(reader.xml_.lineNumber()).arg(reader.xml_.errorString());
    return std::nullopt;
}

void AppcastReader::next()
{
    switch (xml_.readNext()) {
    case QXmlStreamReader::DTD:
        xml_.raiseError(u"a document type is not allowed"_s);
        break;
    case QXmlStreamReader::EntityReference:
        xml_.raiseError(u"an entity that XML does not define"_s);
        break;
    case QXmlStreamReader::StartElement:
        if (++depth_ > maximumDepth)
            xml_.raiseError(u"elements are nested too deeply"_s);
        break;
    case QXmlStreamReader::EndElement:
        --depth_;
        break;
    default:
        break;
    }
}

void AppcastReader::forEachChild(const std::function<void()> &element)
{
    const int inside = depth_;
    while (!xml_.atEnd()) {
        next();
        if (xml_.isEndElement() && depth_ < inside)
            return;
        if (!xml_.isStartElement())
            continue;
        element();
        if (!xml_.hasError() && depth_ > inside)
            skipElement();
    }
}

void AppcastReader::skipElement()
{
    const int outside = depth_ - 1;
    while (!xml_.atEnd() && depth_ > outside)
        next();
}

QString AppcastReader::readText()
{
    QString text;
    const int outside = depth_ - 1;
    while (!xml_.atEnd() && depth_ > outside) {
        next();
        if (xml_.isCharacters())
            text += xml_.text();
        if (text.size() > maximumText)
            xml_.raiseError(u"a text is too long"_s);
    }
    return text.trimmed();
}

void AppcastReader::readDocument()
{
    while (!xml_.atEnd() && !xml_.isStartElement())
        next();
    if (!xml_.hasError() && xml_.name() != u"rss")
        xml_.raiseError(u"the document is no RSS feed"_s);
    forEachChild([this] {
        if (xml_.name() != u"channel")
            return;
        forEachChild([this] {
            if (xml_.name() == u"item" && xml_.namespaceUri().isEmpty())
                readItem();
        });
    });
    while (!xml_.atEnd()) // What follows the root element must be well-formed, too.
        next();
}

void AppcastReader::readItem()
{
    if (items_.size() >= maximumItems) {
        xml_.raiseError(u"too many items"_s);
        return;
    }
    AppcastItem item;
    forEachChild([this, &item] { readItemElement(item); });
    if (item.version.isEmpty() && !item.enclosures.isEmpty())
        item.version = versionFromFileName(item.enclosures.first().url);
    if (item.version.isEmpty())
        return;
    if (item.shownVersion.isEmpty())
        item.shownVersion = item.version;
    items_.append(item);
}

void AppcastReader::readItemElement(AppcastItem &item)
{
    if (isUpdateElement()) {
        readUpdateElement(item);
    } else if (!xml_.namespaceUri().isEmpty()) {
        return;
    } else if (xml_.name() == u"enclosure") {
        if (const AppcastEnclosure enclosure = readEnclosure(item); isWebAddress(enclosure.url))
            item.enclosures.append(enclosure);
    } else if (xml_.name() == u"description") {
        const bool isHtml = updateAttribute(u"format").isEmpty() || updateAttribute(u"format") == u"html";
        const QString text = readText();
        item.notes = isHtml ? plainNotes(text) : text;
    } else if (xml_.name() == u"link") {
        item.page = webAddress(readText());
    } else if (xml_.name() == u"pubDate") {
        item.published = QDateTime::fromString(readText(), Qt::RFC2822Date);
    }
}

void AppcastReader::readUpdateElement(AppcastItem &item)
{
    for (const auto &[name, field] : textFields) {
        if (xml_.name() == name) {
            item.*field = readText();
            return;
        }
    }
    if (xml_.name() == u"criticalUpdate") {
        item.critical = true;
        item.criticalBelow = updateAttribute(u"version");
    } else if (xml_.name() == u"informationalUpdate") {
        readInformational(item);
    } else if (xml_.name() == u"phasedRolloutInterval") {
        item.phasedInterval = std::max<qint64>(0, readText().toLongLong());
    }
}

void AppcastReader::readInformational(AppcastItem &item)
{
    item.informational = true;
    forEachChild([this, &item] {
        if (isUpdateElement() && xml_.name() == u"version")
            item.informationalFor.append(readText());
        else if (isUpdateElement() && xml_.name() == u"belowVersion")
            item.informationalBelow = readText();
    });
}

AppcastEnclosure AppcastReader::readEnclosure(AppcastItem &item)
{
    const QXmlStreamAttributes attributes = xml_.attributes();
    if (item.version.isEmpty())
        item.version = updateAttribute(u"version");
    if (item.shownVersion.isEmpty())
        item.shownVersion = updateAttribute(u"shortVersionString");
    return {
        .url = webAddress(attributes.value(u"url"_s).toString()),
        .length = attributes.value(u"length"_s).toLongLong(),
        .type = attributes.value(u"type"_s).toString(),
        .signature = updateAttribute(u"edSignature"),
        .system = updateAttribute(u"os"),
        .architecture = attributes.value(ownNamespace.toString(), u"architecture"_s).toString(),
    };
}

bool AppcastReader::isUpdateElement() const
{
    return xml_.namespaceUri() == updateNamespace;
}

QString AppcastReader::updateAttribute(QStringView name) const
{
    return xml_.attributes().value(updateNamespace.toString(), name.toString()).toString().trimmed();
}
