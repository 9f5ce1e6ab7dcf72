#include "TextAreaClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <array>
#include <string>
#include <utility>

void TextAreaClipboard::setEditor(QQuickItem *editor)
{
    editor_ = editor;
    editor->installEventFilter(this);
    const QClipboard *clipboard = QGuiApplication::clipboard();
    QObject::disconnect(clipboard, nullptr, editor, nullptr);
    for (const QObject *part : editor->findChildren<QObject *>())
        QObject::disconnect(clipboard, nullptr, part, nullptr);
}

bool TextAreaClipboard::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease)
        return static_cast<QMouseEvent *>(event)->button() == Qt::MiddleButton;
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
        return QObject::eventFilter(watched, event);
    using Action = void (TextAreaClipboard::*)();
    constexpr std::array actions = {std::pair(QKeySequence::Copy, &TextAreaClipboard::copy),
                                    std::pair(QKeySequence::Cut, &TextAreaClipboard::cut),
                                    std::pair(QKeySequence::Paste, &TextAreaClipboard::paste)};
    for (const auto &[keys, action] : actions) {
        if (!static_cast<QKeyEvent *>(event)->matches(keys))
            continue;
        event->accept();
        if (event->type() == QEvent::KeyPress)
            (this->*Action(action))();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void TextAreaClipboard::copy()
{
    QString text;
    QMetaObject::invokeMethod(editor_, "getText", Q_RETURN_ARG(QString, text),
                              Q_ARG(int, editor_->property("selectionStart").toInt()),
                              Q_ARG(int, editor_->property("selectionEnd").toInt()));
    if (text.isEmpty())
        return;
    appState_->pasteboard().clear();
    appState_->pasteboard().setString(text.toStdString());
}

void TextAreaClipboard::cut()
{
    copy();
    replaceSelection({});
}

void TextAreaClipboard::paste()
{
    appState_->pasteboard().readString([self = QPointer(this)](const std::optional<std::string> &text) {
        if (self && self->editor_ && text)
            self->replaceSelection(QString::fromStdString(*text));
    });
}

void TextAreaClipboard::replaceSelection(const QString &text)
{
    QMetaObject::invokeMethod(editor_, "remove", Q_ARG(int, editor_->property("selectionStart").toInt()),
                              Q_ARG(int, editor_->property("selectionEnd").toInt()));
    QMetaObject::invokeMethod(editor_, "insert", Q_ARG(int, editor_->property("cursorPosition").toInt()),
                              Q_ARG(QString, text));
}
