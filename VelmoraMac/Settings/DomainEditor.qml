import QtQuick
import VelmoraMac
import QtQuick.Templates as T

// Edits the ignored domains: one a line, at least 160 points high. Tab leaves it.
Item {
    id: root

    required property string label
    property bool isLoading: false

    // The editor's text may differ in its line ends from the one that is stored: only what the user changes is.
    function load() {
        isLoading = true;
        editor.text = App.state.ignoredDomainsText;
        isLoading = false;
    }

    width: parent?.width ?? 0
    implicitHeight: Math.max(160, editor.implicitHeight) + 20

    // What a text area does not take from the application by itself.
    TextMetrics {
        id: systemFont
    }
    RoundedBox {
        anchors {
            fill: parent
            margins: 10
        }
        radius: 6
        color: Surroundings.colors.textBackground
        borderColor: Surroundings.colors.cardStroke

        T.TextArea {
            id: editor

            anchors.fill: parent
            implicitHeight: contentHeight + 16
            padding: 8
            font.family: systemFont.font.family
            font.pixelSize: 13
            color: Surroundings.colors.label
            selectionColor: Surroundings.colors.accent
            selectedTextColor: "white"
            selectByMouse: true
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            // Asked when they are pressed: while the page is made, nothing around it has its place yet.
            Keys.onTabPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
            Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            Accessible.role: Accessible.EditableText
            Accessible.multiLine: true
            Accessible.name: root.label
            onTextChanged: {
                if (!root.isLoading)
                    App.state.ignoredDomainsText = text;
            }
            Component.onCompleted: root.load()

            FocusRing {
                shown: editor.activeFocus
                radius: 9
            }
        }
        TextAreaClipboard {
            editor: editor
            appState: App.state
        }
        Connections {
            target: App.state

            function onIgnoredDomainsTextChanged() {
                if (editor.text !== App.state.ignoredDomainsText)
                    root.load();
            }
        }
    }
}
