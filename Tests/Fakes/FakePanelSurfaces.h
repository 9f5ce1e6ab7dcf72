#pragma once

#include <VelmoraPlatform/PanelSurfaces.h>

#include <QImage>

#include <memory>
#include <vector>

// A desktop's shell that shows panels when the test says so. The record of a panel stays when it is destroyed.
class FakePanelSurfaces final : public PanelSurfaces {
public:
    struct Record {
        PanelSurfaceTraits traits;
        PanelSurface::Handlers handlers;
        QRect frame;
        std::vector<QRect> frames; // All of them, in order.
        bool visible = false;
        bool exists = true;
        int requests = 0; // For a picture, since the last one.

        [[nodiscard]] QImage picture(double scale = 1)
        {
            requests = 0;
            return handlers.draw(scale).copy();
        }
    };

    [[nodiscard]] bool areOffered() const override { return offered; }

    [[nodiscard]] std::unique_ptr<PanelSurface> makeSurface(const PanelSurfaceTraits &traits,
                                                            PanelSurface::Handlers handlers) override
    {
        records.push_back(std::make_shared<Record>());
        records.back()->traits = traits;
        records.back()->handlers = std::move(handlers);
        return std::make_unique<FakeSurface>(records.back());
    }

    bool offered = true;
    std::vector<std::shared_ptr<Record>> records; // Every panel ever made.

private:
    class FakeSurface final : public PanelSurface {
    public:
        explicit FakeSurface(std::shared_ptr<Record> record)
            : record_(std::move(record))
        {
        }

        FakeSurface(const FakeSurface &) = delete;
        FakeSurface &operator=(const FakeSurface &) = delete;

        ~FakeSurface() override
        {
            record_->visible = false;
            record_->exists = false;
        }

        void setFrame(const QRect &frame) override
        {
            record_->frame = frame;
            record_->frames.push_back(frame);
        }

        void show() override { record_->visible = true; }

        void hide() override { record_->visible = false; }

        [[nodiscard]] bool isVisible() const override { return record_->visible; }

        void requestPicture() override { ++record_->requests; }

    private:
        std::shared_ptr<Record> record_;
    };
};
