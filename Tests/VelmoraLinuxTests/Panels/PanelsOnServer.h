#pragma once

#include <VelmoraLinux/Panels/LayerPanels.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>

#include <QTest>

#include <TestBed/LayerShellServer.h>

#include <optional>

// What tests of panels on a scripted compositor begin and end with.
class PanelsOnServer {
protected:
    void begin(const LayerShellServer::Offer &offer = {})
    {
        server_.emplace(offer);
        panels_ = LayerPanels::create(scheduler_, server_->display());
        QVERIFY(panels_);
    }

    // Ends what a test has begun. Fails it if the compositor saw a fault on the way, up to the last request.
    void end()
    {
        surface_.reset();
        panels_.reset();
        if (server_)
            QCOMPARE(server_->faults(), QStringList());
        server_.reset();
    }

    EventLoopScheduler scheduler_;
    std::optional<LayerShellServer> server_;
    std::unique_ptr<LayerPanels> panels_;
    std::unique_ptr<PanelSurface> surface_;
};
