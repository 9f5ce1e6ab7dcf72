#pragma once

#include <QString>

// The language of the user's desktop.
class SystemLanguage {
public:
    virtual ~SystemLanguage() = default;
    // The lower-case ISO 639 code, without region and script ("de" in Vienna too); empty when none is set.
    // Read again by every call, so that a change takes effect in the next text.
    [[nodiscard]] virtual QString code() const = 0;
};
