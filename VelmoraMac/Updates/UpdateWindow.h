#pragma once

#include <VelmoraMac/AppState.h>
#include <VelmoraMac/Shell/AppWindow.h>
#include <VelmoraMac/Texts/UpdateTexts.h>
#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QObject>
#include <qqmlintegration.h>

// The window of the updater: the current report and the user's answers. The window exists while a report is on show.
class UpdateWindow : public QObject, public UpdateUserDriver {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the services")
    Q_PROPERTY(QString headline READ headline NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
    Q_PROPERTY(QString notes READ notes NOTIFY changed)
    Q_PROPERTY(QString acceptTitle READ acceptTitle NOTIFY changed)
    Q_PROPERTY(QString dismissTitle READ dismissTitle NOTIFY changed)
    Q_PROPERTY(QString skipTitle READ skipTitle NOTIFY changed)
    Q_PROPERTY(bool working READ isWorking NOTIFY changed)
    Q_PROPERTY(double progress READ progress NOTIFY changed)

public:
    UpdateWindow(AppState &appState, AppWindowFactory &windows);

    void show(const UpdateReport &report, Attention attention) override;
    void bringToFront() override;
    void dismiss() override;
    void setAnswerHandler(AnswerHandler handler) override;

    [[nodiscard]] QString headline() const { return texts().headline; }

    [[nodiscard]] QString message() const { return texts().message; }

    [[nodiscard]] QString notes() const { return report_.notes; }

    [[nodiscard]] QString acceptTitle() const { return texts().accept; }

    [[nodiscard]] QString dismissTitle() const { return texts().dismiss; }

    [[nodiscard]] QString skipTitle() const { return texts().skip; }

    // Whether the step shows a progress bar.
    [[nodiscard]] bool isWorking() const;
    // From 0 to 1; negative while it is not known.
    [[nodiscard]] double progress() const;

    // The user's answers; those without a button in the current step are ignored.
    Q_INVOKABLE void accept();
    Q_INVOKABLE void close(); // Also the window's own close button.
    Q_INVOKABLE void skip();

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] UpdateTexts texts() const;
    void answer(UpdateAnswer answer);

    AppState &appState_;
    AppWindowFactory &windows_;
    std::unique_ptr<AppWindow> window_;
    UpdateReport report_;
    AnswerHandler answer_;
};
