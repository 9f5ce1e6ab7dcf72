#pragma once

#include <QtGlobal>

#include <functional>
#include <optional>
#include <string>
#include <utility>

// The system clipboard, plain text only.
//
// Text is UTF-8 bytes as their owner sent them. NUL bytes and bytes that are not valid UTF-8 stay unchanged,
// so that the text around a cleaned link is written back byte for byte. Convert for display only.
//
// No member waits for another process. A copy that its owner marked as secret, and a text above the size
// limit, are reported as having no plain text.
class Pasteboard {
public:
    // The text, or nothing when the contents have no plain-text form.
    using TextHandler = std::function<void(std::optional<std::string> text)>;
    using ChangeHandler = std::function<void()>;
    using ReachHandler = std::function<void()>;
    using LostHandler = std::function<void()>;
    // Whether a text that was written is on the clipboard.
    using OutcomeHandler = std::function<void(bool isOurs)>;

    enum class Reach {
        all,     // Every program's.
        onlyX11, // Those of programs made for X11; the others' are hidden by the compositor.
        none,    // The clipboard can be neither read nor written.
    };

    virtual ~Pasteboard() = default;

    // Whose copies can be seen in this session.
    [[nodiscard]] virtual Reach reach() const = 0;
    // `handler` runs on the main thread after `reach` has become another.
    virtual void setReachHandler(ReachHandler handler) = 0;

    // Grows by one whenever any process, this one included, takes ownership; also for the same text again. A
    // `setString` directly after `clear` belongs to the same change: the two together count once.
    [[nodiscard]] virtual qint64 changeCount() const = 0;
    // Requests the current contents. `done` runs exactly once on the main thread, at once or later; it gets
    // nothing when the owner does not answer in time, or when the contents changed before they were read.
    virtual void readString(TextHandler done) = 0;
    // Both replace the contents that this class knows of: a newer copy by another program is not overwritten,
    // and its change is reported.
    virtual void clear() = 0;
    // `outcome` runs once, from the event loop: as soon as others get the text when they paste, or when it is
    // known that they never will, because a copy was newer, another write has replaced this one, or there is no
    // clipboard any more.
    virtual void setString(std::string text, OutcomeHandler outcome) = 0;

    void setString(std::string text) { setString(std::move(text), nullptr); }

    // Whether `handler` of `setChangeHandler` is called for every change. If not, the count has to be polled.
    [[nodiscard]] virtual bool notifiesChanges() const = 0;
    // `handler` runs on the main thread after the count has grown, never from within a call of this class.
    virtual void setChangeHandler(ChangeHandler handler) = 0;
    // `handler` runs once when the session's clipboard has gone away for good; from then on it is empty.
    virtual void setLostHandler(LostHandler handler) = 0;
};
