#pragma once

#include <VelmoraMac/Shell/AppWindow.h>

#include <QStringList>

// Windows in memory that record the calls.
class FakeAppWindows final : public AppWindowFactory {
public:
    [[nodiscard]] std::unique_ptr<AppWindow> makeWindow(const View &newView,
                                                        const AppWindowOptions &newOptions) override
    {
        view = newView;
        options = newOptions;
        log.append(QStringLiteral("made"));
        return std::make_unique<FakeWindow>(*this);
    }

    View view;
    AppWindowOptions options;
    QStringList log;
    bool visible = false; // The close button sets it to false.

private:
    class FakeWindow final : public AppWindow {
    public:
        explicit FakeWindow(FakeAppWindows &windows)
            : windows_(windows)
        {
        }

        [[nodiscard]] bool isVisible() const override { return windows_.visible; }

        void centre() override { windows_.log.append(QStringLiteral("centred")); }

        void bringToFront() override
        {
            windows_.visible = true;
            windows_.log.append(QStringLiteral("to the front"));
        }

        void showQuietly() override
        {
            windows_.visible = true;
            windows_.log.append(QStringLiteral("shown quietly"));
        }

    private:
        FakeAppWindows &windows_;
    };
};
