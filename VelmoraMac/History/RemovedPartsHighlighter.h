#pragma once

#include <QColor>
#include <QPointer>
#include <QQuickTextDocument>
#include <qqmlintegration.h>

// Tints in the document of a text view, which shows a text before its cleaning, what the cleaning has removed. The
// text itself stays as it is, also when it is copied.
class RemovedPartsHighlighter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickTextDocument *document READ document WRITE setDocument NOTIFY changed)
    Q_PROPERTY(QString cleanedText MEMBER cleanedText_ NOTIFY changed)
    Q_PROPERTY(QColor tint MEMBER tint_ NOTIFY changed)

public:
    explicit RemovedPartsHighlighter(QObject *parent = nullptr);

    [[nodiscard]] QQuickTextDocument *document() const { return document_; }

    void setDocument(QQuickTextDocument *document);

Q_SIGNALS:
    void changed();

private:
    class Highlighter;

    QPointer<QQuickTextDocument> document_;
    QPointer<Highlighter> highlighter_; // Belongs to the document.
    QString cleanedText_;
    QColor tint_;
};
