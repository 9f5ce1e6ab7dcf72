#pragma once

#include <VelmoraMac/AppState.h>

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <qqmlintegration.h>

// Copies, cuts and pastes for a text area, by the application's clipboard in place of the toolkit's.
//
// By itself a text area asks the clipboard's owner at every change of the clipboard, and waits for the
// answer. An owner that hangs would stop the program, and where the program is the owner it would wait for
// itself. So the text area is cut off from the toolkit's clipboard, also from pasting with the middle button.
class TextAreaClipboard : public QObject {
    Q_OBJECT
    Q_PROPERTY(QQuickItem *editor READ editor WRITE setEditor REQUIRED)
    Q_PROPERTY(AppState *appState MEMBER appState_ REQUIRED)
    QML_ELEMENT

public:
    using QObject::QObject;

    [[nodiscard]] QQuickItem *editor() const { return editor_; }

    void setEditor(QQuickItem *editor);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void copy();
    void cut();
    void paste();
    void replaceSelection(const QString &text);

    QPointer<QQuickItem> editor_;
    AppState *appState_ = nullptr;
};
