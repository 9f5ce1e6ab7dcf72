import QtQuick
import VelmoraMac

// The settings' general tab.
FormPage {
    id: root

    required property AppState appState
    required property UpdateController updateController
    required property NotificationCenter notifications

    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, appState.language);
    }

    FormSection {
        title: root.t("Behavior", "Verhalten")

        FormSwitch {
            label: root.t("Auto-clean copied links", "Kopierte Links automatisch bereinigen")
            checked: root.appState.autoCleanEnabled
            onSwitched: on => root.appState.autoCleanEnabled = on
        }
        FormSwitch {
            label: root.t("Ask before cleaning", "Vor dem Bereinigen fragen")
            note: root.t("Show a warning first and clean only when you confirm.",
                         "Erst warnen und nur nach Bestätigung bereinigen.")
            checked: root.appState.askBeforeCleaningEnabled
            onSwitched: on => root.appState.askBeforeCleaningEnabled = on
        }
        FormSwitch {
            label: root.t("Start at Login", "Beim Login starten")
            note: root.t("Available in the bundled signed app.", "Verfügbar in der signierten App.")
            problem: root.appState.lastError
            checked: root.appState.launchAtLoginEnabled
            onSwitched: on => root.appState.launchAtLoginEnabled = on
        }
        FormRow {
            note: root.t("Use this if the Velmora icon was hidden or removed from the menu bar.",
                         "Nutze das, wenn das Velmora-Icon ausgeblendet oder aus der Menüleiste entfernt wurde.")

            SystemButton {
                text: root.t("Show Menu Bar Icon", "Menüleisten-Icon anzeigen")
                onClicked: root.notifications.post("VelmoraRestoreMenuBarIcon")
            }
        }
    }
    FormSection {
        title: root.t("Language", "Sprache")

        FormRow {
            label: root.t("App language", "App-Sprache")

            SegmentedPicker {
                label: root.t("App language", "App-Sprache")
                titles: [root.t("System", "System"), root.t("English", "Englisch"), root.t("German", "Deutsch")]
                currentIndex: root.appState.language
                onChosen: index => root.appState.language = index
            }
        }
    }
    FormSection {
        title: root.t("Design", "Design")

        FormRow {
            label: root.t("Theme", "Theme")

            SegmentedPicker {
                label: root.t("Theme", "Theme")
                titles: [root.t("Aurora", "Aurora"), root.t("Ocean", "Ocean"), root.t("Light", "Hell"),
                    root.t("Graphite", "Graphit")]
                currentIndex: root.appState.appTheme
                onChosen: index => root.appState.appTheme = index
            }
        }
    }
    FormSection {
        title: root.t("Privacy", "Datenschutz")

        FormSwitch {
            label: root.t("Share anonymous usage data", "Anonyme Nutzungsdaten teilen")
            note: root.t("Sends sparse app events only. Links, domains and clipboard contents are never sent.",
                         "Sendet nur sparsame App-Ereignisse. Links, Domains und Clipboard-Inhalte werden nie gesendet.")
            checked: root.appState.telemetryEnabled
            onSwitched: on => root.appState.telemetryEnabled = on
        }
    }
    FormSection {
        title: root.t("Stats", "Statistiken")

        FormValue {
            label: root.t("Links cleaned", "Links bereinigt")
            value: root.appState.totalCleaned.toFixed(0)
        }
        FormValue {
            label: root.t("Cleaned today", "Heute bereinigt")
            value: root.appState.cleanedToday.toFixed(0)
        }
        FormValue {
            label: root.t("Trackers removed", "Tracker entfernt")
            value: root.appState.totalTrackersRemoved.toFixed(0)
        }
    }
    FormSection {
        title: root.t("App Info", "App-Info")

        FormValue {
            label: root.t("Version", "Version")
            value: root.t("0.1.9", "0.1.9")
        }
        FormValue {
            label: root.t("Build", "Build")
            value: root.t("10", "10")
        }
        FormValue {
            label: root.t("Minimum macOS", "Minimum macOS")
            value: root.t("14.0", "14.0")
        }
    }
    FormSection {
        title: root.t("Updates", "Updates")

        FormRow {
            note: root.updateController.statusText(root.appState.language)

            SystemButton {
                text: root.t("Check for Updates...", "Nach Updates suchen...")
                enabled: root.updateController.canCheckForUpdates
                onClicked: root.updateController.checkForUpdates()
            }
        }
    }
}
