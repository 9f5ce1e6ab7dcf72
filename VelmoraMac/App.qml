pragma Singleton

import QtQml
import VelmoraMac

// What every view may need: the state it shows, and texts in the user's language. One for each QML engine;
// see ViewEnvironment.
QtObject {
    property AppState state

    // Of a pair of texts the one in the application's language. What calls it in a binding follows the language.
    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, state.language);
    }
}
