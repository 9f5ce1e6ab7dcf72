#include "RemovedPartsHighlighter.h"

#include <VelmoraMac/Texts/RemovedParts.h>

#include <QTextDocument>

#include <algorithm>

class RemovedPartsHighlighter::Highlighter : public QSyntaxHighlighter {
public:
    Highlighter(QTextDocument *document, const RemovedPartsHighlighter &settings)
        : QSyntaxHighlighter(document)
        , settings_(settings)
    {
    }

protected:
    void highlightBlock(const QString &text) override
    {
        if (!settings_.tint_.isValid())
            return;
        const qsizetype start = currentBlock().position();
        for (const auto &[from, length] :
             RemovedParts::in(document()->toPlainText(), settings_.cleanedText_)) {
            const qsizetype first = std::max(from, start);
            const qsizetype last = std::min(from + length, start + text.size());
            if (first < last)
                setFormat(static_cast<int>(first - start), static_cast<int>(last - first), settings_.tint_);
        }
    }

private:
    const RemovedPartsHighlighter &settings_; // A child of the view that owns the document.
};

RemovedPartsHighlighter::RemovedPartsHighlighter(QObject *parent)
    : QObject(parent)
{
    connect(this, &RemovedPartsHighlighter::changed, this, [this] {
        if (highlighter_)
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
