#include "RemovedPartsHighlighter.h"

#include <VelmoraMac/Texts/RemovedParts.h>

#include <QSyntaxHighlighter>
#include <QTextDocument>

#include <algorithm>
#include <optional>

class RemovedPartsHighlighter::Highlighter : public QSyntaxHighlighter {
public:
    Highlighter(QTextDocument *document, const RemovedPartsHighlighter &settings)
        : QSyntaxHighlighter(static_cast<QObject *>(document))
        , settings_(settings)
    {
        // Before the base class gets a change and highlights its lines.
        connect(document, &QTextDocument::contentsChange, this, &Highlighter::forgetParts);
        setDocument(document);
    }

    void forgetParts() { parts_.reset(); }

protected:
    void highlightBlock(const QString &text) override
    {
        if (!settings_.tint_.isValid())
            return;
        const QList<RemovedParts::Part> &parts = partsOfDocument();
        const qsizetype start = currentBlock().position();
        const qsizetype end = start + text.size();
        auto part = std::ranges::partition_point(
            parts, [start](const RemovedParts::Part &each) { return each.start + each.length <= start; });
        for (; part != parts.end() && part->start < end; ++part) {
            const qsizetype first = std::max(part->start, start);
            const qsizetype last = std::min(part->start + part->length, end);
            setFormat(static_cast<int>(first - start), static_cast<int>(last - first), settings_.tint_);
        }
    }

private:
    // Found once for all lines: comparing whole texts for each line would be quadratic.
    const QList<RemovedParts::Part> &partsOfDocument()
    {
        if (!parts_)
            parts_ = RemovedParts::in(document()->toPlainText(), settings_.cleanedText_);
        return *parts_;
    }

    const RemovedPartsHighlighter &settings_; // A child of the view that owns the document.
    std::optional<QList<RemovedParts::Part>> parts_;
};

RemovedPartsHighlighter::RemovedPartsHighlighter(QObject *parent)
    : QObject(parent)
{
    connect(this, &RemovedPartsHighlighter::changed, this, [this] {
        if (!highlighter_)
            return;
        highlighter_->forgetParts();
        highlighter_->rehighlight();
    });
}

void RemovedPartsHighlighter::setDocument(QQuickTextDocument *document)
{
    if (document == document_)
        return;
    delete highlighter_;
    document_ = document;
    if (document_)
        highlighter_ = new Highlighter(document_->textDocument(), *this);
    Q_EMIT changed();
}
