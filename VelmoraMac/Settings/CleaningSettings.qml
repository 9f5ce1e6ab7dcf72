import VelmoraMac

// The settings' cleaning tab.
FormPage {
    FormSection {
        title: App.t("Rules", "Regeln")

        FormRow {
            label: App.t("Removes utm_*, fbclid, gclid, msclkid, twclid, mc_cid and common share tokens.",
                         "Entfernt utm_*, fbclid, gclid, msclkid, twclid, mc_cid und gängige Share-Tokens.")
        }
    }
    FormSection {
        title: App.t("Ignored Domains", "Ignorierte Domains")

        DomainEditor {
            label: App.t("Ignored Domains", "Ignorierte Domains")
        }
        FormRow {
            note: App.t("One domain per line. Velmora leaves these links untouched.",
                        "Eine Domain pro Zeile. Velmora lässt diese Links unverändert.")
            noteFirst: true

            SystemButton {
                text: App.t("Ignore last domain", "Letzte Domain ignorieren")
                enabled: App.state.hasLastResult
                onClicked: App.state.addIgnoredHostFromLastResult()
            }
        }
    }
}
