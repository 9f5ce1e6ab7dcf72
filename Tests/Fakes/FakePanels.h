#pragma once

#include <VelmoraMac/Shell/Panel.h>

#include <QStringList>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

// Panels in memory. The record of a panel stays when the panel is destroyed.
class FakePanels final : public PanelFactory {
public:
    struct Record {
        View view;
        PanelOptions options;
        QRect frame;
        QStringList frameChanges; // "at once" or "animated", in order.
        bool visible = false;
        int keyboardRequests = 0;
        bool exists = true;
        quintptr windowId = 0;

        // Presses the view's button that sends `signal`.
        void request(const QByteArray &signal) const
        {
            for (const View::Request &request : view.requests) {
                if (request.signal == signal)
                    request.handler();
            }
        }
    };

    [[nodiscard]] std::unique_ptr<Panel> makePanel(const View &view, const PanelOptions &options) override
    {
        auto record = std::make_shared<Record>();
        record->view = view;
        record->options = options;
        record->windowId = ++lastWindowId_;
        records.push_back(record);
        return std::make_unique<FakePanel>(record);
    }

    // The panels on screen, oldest first.
    [[nodiscard]] std::vector<std::shared_ptr<Record>> visible() const
    {
        std::vector<std::shared_ptr<Record>> shown;
        for (const auto &record : records) {
            if (record->visible)
                shown.push_back(record);
        }
        return shown;
    }

    std::vector<std::shared_ptr<Record>> records; // Every panel ever made.

private:
    class FakePanel final : public Panel {
    public:
        explicit FakePanel(std::shared_ptr<Record> record)
            : record_(std::move(record))
        {
        }

        FakePanel(const FakePanel &) = delete;
        FakePanel &operator=(const FakePanel &) = delete;

        ~FakePanel() override
        {
            record_->visible = false;
            record_->exists = false;
        }

        [[nodiscard]] QRect frame() const override { return record_->frame; }

        void setFrame(const QRect &frame, FrameChange change) override
        {
            record_->frame = frame;
            record_->frameChanges.append(change == FrameChange::atOnce ? u"at once"_s : u"animated"_s);
        }

        [[nodiscard]] bool isVisible() const override { return record_->visible; }

        void orderFront() override { record_->visible = true; }

        void orderOut() override { record_->visible = false; }

        void takeKeyboard() override { ++record_->keyboardRequests; }

        [[nodiscard]] quintptr windowId() const override { return record_->windowId; }

    private:
        std::shared_ptr<Record> record_;
    };

    quintptr lastWindowId_ = 100;
};
