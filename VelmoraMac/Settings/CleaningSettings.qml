import QtQuick
import VelmoraMac

// The settings' cleaning tab.
FormPage {
    id: root

    required property AppState appState

    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, appState.language);
    }

    FormSection {
        title: root.t("Rules", "Regeln")

        FormRow {
            label: root.t("Removes utm_*, fbclid, gclid, msclkid, twclid, mc_cid and common share tokens.",
                          "Entfernt utm_*, fbclid, gclid, msclkid, twclid, mc_cid und gängige Share-Tokens.")
        }
    }
    FormSection {
        title: root.t("Ignored Domains", "Ignorierte Domains")

        DomainEditor {
            appState: root.appState
            label: root.t("Ignored Domains", "Ignorierte Domains")
        }
        FormRow {
            note: root.t("One domain per line. Velmora leaves these links untouched.",
                         "Eine Domain pro Zeile. Velmora lässt diese Links unverändert.")

            SystemButton {
                text: root.t("Ignore last domain", "Letzte Domain ignorieren")
                enabled: root.appState.hasLastResult
                onClicked: root.appState.addIgnoredHostFromLastResult()
            }
        }
    }
}
