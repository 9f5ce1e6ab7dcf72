#include "AppcastWriter.h"

#include <VelmoraLinux/Updates/AppcastReader.h>
#include <VelmoraLinux/Updates/VersionOrder.h>

#include <QFile>
#include <QSaveFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

using namespace Qt::StringLiterals;

namespace {

const QString updatePrefix = u"http://www.andymatuschak.org/xml-namespaces/sparkle"_s;
const QString ownPrefix = u"https://velmora.app/xml-namespaces/updates"_s;

const QByteArray emptyFeed = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<rss version=\"2.0\""
                             " xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\""
                             " xmlns:velmora=\"https://velmora.app/xml-namespaces/updates\">\n"
                             "  <channel>\n    <title>Velmora</title>\n  </channel>\n</rss>\n";

// Nothing when the file exists but cannot be used.
std::optional<QByteArray> presentFeed(const QString &path, const AppcastItem &item, QString &problem)
{
    QFile file(path);
    if (!file.exists())
        return emptyFeed;
    if (!file.open(QIODevice::ReadOnly)) {
        problem = u"%1: %2"_s.arg(path, file.errorString());
        return std::nullopt;
    }
    const QByteArray feed = file.read(AppcastReader::maximumBytes + 1);
    QString reason;
    const auto items = AppcastReader::read(feed, &reason);
    if (!items) {
        problem = u"%1: %2"_s.arg(path, reason);
        return std::nullopt;
    }
    for (const AppcastItem &present : *items) {
        const bool same = compareVersions(present.version, item.version) == std::weak_ordering::equivalent;
        if (same && present.enclosures.value(0).type == item.enclosures.first().type &&
            present.enclosures.value(0).architecture == item.enclosures.first().architecture) {
            problem = u"%1: version %2 is there already"_s.arg(path, item.version);
            return std::nullopt;
        }
    }
    return feed;
}

void writeText(QXmlStreamWriter &xml, const QString &space, const QString &name, const QString &text)
{
    if (text.isEmpty())
        return;
    xml.writeCharacters(u"\n      "_s);
    xml.writeTextElement(space, name, text);
}

void writeEnclosure(QXmlStreamWriter &xml, const AppcastEnclosure &enclosure)
{
    xml.writeCharacters(u"\n      "_s);
    xml.writeEmptyElement(u"enclosure"_s);
    xml.writeAttribute(u"url"_s, QString::fromLatin1(enclosure.url.toEncoded()));
    xml.writeAttribute(u"length"_s, QString::number(enclosure.length));
    xml.writeAttribute(u"type"_s, enclosure.type);
    xml.writeAttribute(updatePrefix, u"os"_s, enclosure.system);
    xml.writeAttribute(ownPrefix, u"architecture"_s, enclosure.architecture);
    xml.writeAttribute(updatePrefix, u"edSignature"_s, enclosure.signature);
}

void writeItem(QXmlStreamWriter &xml, const AppcastItem &item)
{
    xml.writeStartElement(u"item"_s);
    writeText(xml, {}, u"title"_s, item.shownVersion);
    writeText(xml, {}, u"pubDate"_s, item.published.toString(Qt::RFC2822Date));
    writeText(xml, updatePrefix, u"version"_s, item.version);
    writeText(xml, updatePrefix, u"shortVersionString"_s, item.shownVersion);
    writeText(xml, updatePrefix, u"minimumSystemVersion"_s, item.minimumSystem);
    if (item.critical) {
        xml.writeCharacters(u"\n      "_s);
        xml.writeEmptyElement(updatePrefix, u"criticalUpdate"_s);
    }
    if (!item.notes.isEmpty()) {
        xml.writeCharacters(u"\n      "_s);
        xml.writeStartElement(u"description"_s);
        xml.writeAttribute(updatePrefix, u"format"_s, u"plain-text"_s);
        xml.writeCharacters(item.notes);
        xml.writeEndElement();
    }
    writeEnclosure(xml, item.enclosures.first());
    xml.writeCharacters(u"\n    "_s);
    xml.writeEndElement();
}

QByteArray withItem(const QByteArray &feed, const AppcastItem &item)
{
    QByteArray result;
    QXmlStreamReader reader(feed);
    QXmlStreamWriter writer(&result);
    bool added = false;
    const auto add = [&](const QString &before, const QString &behind) {
        writer.writeCharacters(before);
        writeItem(writer, item);
        writer.writeCharacters(behind);
        added = true;
    };
    while (!reader.atEnd() && !reader.hasError()) {
        reader.readNext();
        if (!added && reader.isStartElement() && reader.name() == u"item")
            add({}, u"\n    "_s);
        else if (!added && reader.isEndElement() && reader.name() == u"channel")
            add(u"  "_s, u"\n  "_s);
        if (reader.tokenType() != QXmlStreamReader::Invalid)
            writer.writeCurrentToken(reader);
    }
    return result;
}

} // namespace

bool addToAppcast(const QString &path, const AppcastItem &item, QString &problem)
{
    const auto present = presentFeed(path, item, problem);
    if (!present)
        return false;
    const QByteArray feed = withItem(*present, item);
    QString reason;
    const auto items = AppcastReader::read(feed, &reason);
    if (!items || !items->contains(item)) {
        problem = u"%1: the new entry would not be readable (%2)"_s.arg(path, reason);
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(feed) != feed.size() || !file.commit()) {
        problem = u"%1: %2"_s.arg(path, file.errorString());
        return false;
    }
    return true;
}
