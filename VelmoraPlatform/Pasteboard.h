#pragma once

#include <QtGlobal>

#include <functional>
#include <optional>
#include <string>

// The system clipboard, plain text only.
//
// Text is UTF-8 bytes as their owner gave them: NUL bytes and bytes that are not valid UTF-8 stay what they
// are, so that text around a cleaned link goes back unharmed. Convert for display, never for writing back.
//
// No member waits for another process. A copy that its owner marked as secret, and a text too large to be
// worth handling, have no plain text as far as this class tells.
class Pasteboard {
public:
    // The text, or nothing when the contents have no plain-text form.
    using TextHandler = std::function<void(std::optional<std::string> text)>;
    using ChangeHandler = std::function<void()>;
    using LostHandler = std::function<void()>;

    virtual ~Pasteboard() = default;

    // Whether this session has a clipboard that can be read and written at all; stays as it is.
    [[nodiscard]] virtual bool isReachable() const { return true; }

    // Grows by one whenever any process, this one included, takes over the contents; also for the same text
    // again. A `setString` directly after `clear` belongs to the same take-over: the two together are one
    // step.
    [[nodiscard]] virtual qint64 changeCount() const = 0;
    // Asks for the present contents. `done` runs exactly once on the main thread, at once or later; it gets
    // nothing when the owner does not answer in time, or when the contents changed before they were read.
    virtual void readString(TextHandler done) = 0;
    // Both replace what is on the clipboard as far as it is known here: a copy made by somebody else at this
    // very moment wins, and its change is reported.
    virtual void clear() = 0;
    virtual void setString(std::string text) = 0;

    // Whether `handler` of `setChangeHandler` is called for every change. If not, the count has to be polled.
    [[nodiscard]] virtual bool notifiesChanges() const = 0;
    // `handler` runs on the main thread after the count has grown, never from within a call of this class.
    virtual void setChangeHandler(ChangeHandler handler) = 0;
    // `handler` runs once when the session's clipboard has gone away for good; from then on it is empty.
    virtual void setLostHandler(LostHandler handler) = 0;
};
