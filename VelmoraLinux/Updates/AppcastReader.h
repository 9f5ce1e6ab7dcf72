#pragma once

#include "Appcast.h"

#include <QByteArray>
#include <QXmlStreamReader>

#include <functional>

// Reads an update feed: RSS 2.0 with the elements of the update namespace.
//
// The text comes from the network and is not trusted: the whole feed is refused when it has a document type
// or an entity that XML does not define, is nested too deeply or too large, or is not well-formed. Unknown
// elements are skipped.
class AppcastReader {
public:
    static constexpr qsizetype maximumBytes = qsizetype{2} * 1024 * 1024;

    // Nothing when the feed is refused; `problem` then says why and in which line.
    [[nodiscard]] static std::optional<Appcast> read(const QByteArray &feed, QString *problem = nullptr);

private:
    explicit AppcastReader(const QByteArray &feed);

    void readDocument();
    void readItem();
    void readItemElement(AppcastItem &item);
    void readUpdateElement(AppcastItem &item);
    void readInformational(AppcastItem &item);
    [[nodiscard]] AppcastEnclosure readEnclosure(AppcastItem &item);
    [[nodiscard]] QString readText();
    // Calls `element` at each start tag inside the current element; it may read the element or leave it.
    void forEachChild(const std::function<void()> &element);
    void skipElement();
    void next();
    [[nodiscard]] bool isUpdateElement() const;
    [[nodiscard]] QString updateAttribute(QStringView name) const;

    QXmlStreamReader xml_;
    Appcast items_;
    int depth_ = 0;
};
