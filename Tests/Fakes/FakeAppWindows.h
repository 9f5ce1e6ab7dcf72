#pragma once

#include <VelmoraMac/Shell/AppWindow.h>

#include <QStringList>

#include <functional>

using namespace Qt::StringLiterals;

// Windows in memory that record the calls.
class FakeAppWindows final : public AppWindowFactory {
public:
    [[nodiscard]] std::unique_ptr<AppWindow> makeWindow(const View &newView,
                                                        const AppWindowOptions &newOptions) override
    {
        view = newView;
        options = newOptions;
        log.append(u"made"_s);
        return std::make_unique<FakeWindow>(*this);
    }

    View view;
    AppWindowOptions options;
    QStringList log;
    bool visible = false;                      // The close button sets it to false.
    std::function<void()> aboutToCome = [] {}; // Called before a window comes to the front.

private:
    class FakeWindow final : public AppWindow {
    public:
        explicit FakeWindow(FakeAppWindows &windows)
            : windows_(windows)
        {
        }

        [[nodiscard]] bool isVisible() const override { return windows_.visible; }

        void centre() override { windows_.log.append(u"centred"_s); }

        void bringToFront() override
        {
            windows_.aboutToCome();
            windows_.visible = true;
            windows_.log.append(u"to the front"_s);
        }

        void showQuietly() override
        {
            windows_.visible = true;
            windows_.log.append(u"shown quietly"_s);
        }

    private:
        FakeAppWindows &windows_;
    };
};
