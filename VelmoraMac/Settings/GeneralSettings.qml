import QtQuick
import VelmoraMac

// The settings' general tab.
FormPage {
    id: root

    required property UpdateController updateController
    required property NotificationCenter notifications
    readonly property string clipboardProblem: {
        switch (App.state.clipboardReach) {
        case Velmora.ClipboardReach.onlyX11:
            return App.t("This desktop shows Velmora only what programs made for X11 copy, so links from all other programs stay as they are.",
                         "Dieser Desktop zeigt Velmora nur, was für X11 gemachte Programme kopieren, darum bleiben Links aus allen anderen Programmen, wie sie sind.");
        case Velmora.ClipboardReach.none:
            return App.t("Velmora cannot reach the clipboard of this session, so links stay as they are. Log in to another kind of session, which your login screen offers.",
                         "Velmora erreicht die Zwischenablage dieser Sitzung nicht, darum bleiben Links, wie sie sind. Melde dich in einer anderen Art von Sitzung an, die dein Anmeldebildschirm anbietet.");
        default:
            return "";
        }
    }

    // What became of the settings file, for as long as it matters.
    FormSection {
        visible: App.state.settingsNotSaved || App.state.settingsSetAside

        FormRow {
            visible: App.state.settingsNotSaved
            problem: App.t("Settings cannot be saved and last only until you quit. Make room on the disk and check that your data folder is writable.",
                           "Einstellungen können nicht gespeichert werden und gelten nur bis zum Beenden. Schaffe Platz auf dem Datenträger und prüfe, ob dein Datenordner beschreibbar ist.")
        }
        FormRow {
            visible: App.state.settingsSetAside
            problem: App.t("The settings file was damaged. It was kept under another name, and Velmora began with new settings. Please check them.",
                           "Die Einstellungsdatei war beschädigt. Sie wurde unter anderem Namen aufbewahrt, und Velmora hat mit neuen Einstellungen begonnen. Bitte prüfe sie.")
        }
    }
    FormSection {
        title: App.t("Behavior", "Verhalten")

        FormSwitch {
            label: App.t("Auto-clean copied links", "Kopierte Links automatisch bereinigen")
            problem: root.clipboardProblem
            checked: App.state.autoCleanEnabled
            onSwitched: on => App.state.autoCleanEnabled = on
        }
        FormSwitch {
            label: App.t("Ask before cleaning", "Vor dem Bereinigen fragen")
            note: App.t("Show a warning first and clean only when you confirm.",
                        "Erst warnen und nur nach Bestätigung bereinigen.")
            checked: App.state.askBeforeCleaningEnabled
            onSwitched: on => App.state.askBeforeCleaningEnabled = on
        }
        FormSwitch {
            label: App.t("Start at Login", "Beim Login starten")
            note: App.t("Available in the bundled signed app.", "Verfügbar in der signierten App.")
            problem: App.state.lastError
            checked: App.state.launchAtLoginEnabled
            onSwitched: on => App.state.launchAtLoginEnabled = on
        }
        FormRow {
            note: App.t("Use this if the Velmora icon was hidden or removed from the menu bar.",
                        "Nutze das, wenn das Velmora-Icon ausgeblendet oder aus der Menüleiste entfernt wurde.")

            SystemButton {
                text: App.t("Show Menu Bar Icon", "Menüleisten-Icon anzeigen")
                onClicked: root.notifications.post(root.notifications.restoreMenuBarIcon)
            }
        }
    }
    FormSection {
        title: App.t("Language", "Sprache")

        FormRow {
            label: App.t("App language", "App-Sprache")

            SegmentedPicker {
                label: App.t("App language", "App-Sprache")
                values: LocalizedStrings.languages
                titles: [...values].map(named => LocalizedStrings.languageName(named, App.state.language))
                current: App.state.language
                onChosen: language => App.state.language = language
            }
        }
    }
    FormSection {
        title: App.t("Design", "Design")

        FormRow {
            label: App.t("Theme", "Theme")

            SegmentedPicker {
                label: App.t("Theme", "Theme")
                values: Surroundings.themes
                titles: [...values].map(named => Surroundings.themeName(named, App.state.language))
                current: App.state.appTheme
                onChosen: theme => App.state.appTheme = theme
            }
        }
    }
    FormSection {
        title: App.t("Privacy", "Datenschutz")

        FormSwitch {
            label: App.t("Share anonymous usage data", "Anonyme Nutzungsdaten teilen")
            note: App.t("Sends sparse app events only. Links, domains and clipboard contents are never sent.",
                        "Sendet nur sparsame App-Ereignisse. Links, Domains und Clipboard-Inhalte werden nie gesendet.")
            checked: App.state.telemetryEnabled
            onSwitched: on => App.state.telemetryEnabled = on
        }
    }
    FormSection {
        title: App.t("Stats", "Statistiken")

        FormValue {
            label: App.t("Links cleaned", "Links bereinigt")
            value: App.state.totalCleaned.toFixed(0)
        }
        FormValue {
            label: App.t("Cleaned today", "Heute bereinigt")
            value: App.state.cleanedToday.toFixed(0)
        }
        FormValue {
            label: App.t("Trackers removed", "Tracker entfernt")
            value: App.state.totalTrackersRemoved.toFixed(0)
        }
    }
    FormSection {
        title: App.t("App Info", "App-Info")

        FormValue {
            label: App.t("Version", "Version")
            value: App.t("0.1.9", "0.1.9")
        }
        FormValue {
            label: App.t("Build", "Build")
            value: App.t("10", "10")
        }
        FormValue {
            label: App.t("Minimum macOS", "Minimum macOS")
            value: App.t("14.0", "14.0")
        }
    }
    FormSection {
        title: App.t("Updates", "Updates")

        FormRow {
            note: root.updateController.statusText(App.state.language)
            noteFirst: true

            SystemButton {
                text: App.t("Check for Updates...", "Nach Updates suchen...")
                enabled: root.updateController.canCheckForUpdates
                onClicked: root.updateController.checkForUpdates()
            }
        }
    }
}
