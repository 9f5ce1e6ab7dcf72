#pragma once

#include <QByteArray>
#include <QProcess>

#include <chrono>
#include <optional>

using namespace Qt::StringLiterals;

// Another program that owns the clipboard: drives selection-owner, whose first comment lists the modes.
class CopyingProgram {
public:
    explicit CopyingProgram(const QProcessEnvironment &environment);
    ~CopyingProgram();
    Q_DISABLE_COPY_MOVE(CopyingProgram)

    // Takes the clipboard. Returns when the X server has confirmed it: the time on the steady clock, or
    // nothing on failure.
    std::optional<std::chrono::nanoseconds> copy(const QByteArray &text, const QByteArray &mode = "text");
    // `size` times the same letter.
    std::optional<std::chrono::nanoseconds> copyFilled(qsizetype size);
    void release();
    // Waits until another program has taken the clipboard: the time, or nothing when it takes longer than `limit`.
    std::optional<std::chrono::nanoseconds> waitUntilLost(std::chrono::milliseconds limit);
    // The targets (ICCCM) that others have requested of the current copy so far.
    [[nodiscard]] QList<QByteArray> asked();

    // Stops answering, as a program that hangs; and continues.
    void hang();
    void goOn();
    void kill();

private:
    void readLines();
    std::optional<std::chrono::nanoseconds> waitFor(std::optional<std::chrono::nanoseconds> &moment,
                                                    std::chrono::milliseconds limit);

    QProcess process_;
    std::optional<std::chrono::nanoseconds> owned_;
    std::optional<std::chrono::nanoseconds> lost_;
    QList<QByteArray> asked_;
};

// What another program gets when it pastes: the clipboard converted to the given target, as xclip reads it.
// Nothing when the owner refuses that target.
[[nodiscard]] std::optional<QByteArray> paste(const QProcessEnvironment &environment,
                                              const QString &form = u"UTF8_STRING"_s);

// Copies as another program does, while the event loop of the caller stands still. False on failure.
[[nodiscard]] bool copyUnheard(const QProcessEnvironment &environment, const QByteArray &text);
