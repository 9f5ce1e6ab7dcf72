#pragma once

#include <QByteArray>
#include <QProcess>

#include <chrono>
#include <optional>

// Another program with the clipboard in its hands: drives selection-owner, whose head lists the manners of
// copying.
class CopyingProgram {
public:
    explicit CopyingProgram(const QProcessEnvironment &environment);
    ~CopyingProgram();
    Q_DISABLE_COPY_MOVE(CopyingProgram)

    // Takes the clipboard. Returns when the server has given it; the moment on the steady clock, or nothing
    // on failure.
    std::optional<std::chrono::nanoseconds> copy(const QByteArray &text, const QByteArray &mode = "text");
    // `size` times the same letter.
    std::optional<std::chrono::nanoseconds> copyFilled(qsizetype size);
    void release();
    // Waits until somebody else has taken the clipboard; that moment, or nothing when it takes longer than
    // `limit`.
    std::optional<std::chrono::nanoseconds> waitUntilLost(std::chrono::milliseconds limit);
    // The forms in which others have asked for the present copy so far.
    [[nodiscard]] QList<QByteArray> asked();

    // Stops answering, as a program that hangs; and goes on.
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

// What a program of the user's gets when it pastes: the clipboard in the given form, as xclip reads it.
// Nothing when there is no such form.
[[nodiscard]] std::optional<QByteArray> paste(const QProcessEnvironment &environment,
                                              const QString &form = QStringLiteral("UTF8_STRING"));
