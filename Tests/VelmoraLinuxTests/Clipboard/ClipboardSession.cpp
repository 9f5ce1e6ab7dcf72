#include "ClipboardSession.h"

#include <VelmoraLinux/Clipboard/DataControlPasteboard.h>
#include <VelmoraLinux/Clipboard/X11Pasteboard.h>

#include <QTest>

#include <TestBed/CopyingProgram.h>
#include <TestBed/DataControlServer.h>
#include <TestBed/XServer.h>
#include <unistd.h>

namespace {

const std::string plainText = "text/plain;charset=utf-8";

class X11Session final : public ClipboardSession {
public:
    [[nodiscard]] std::unique_ptr<Pasteboard> makePasteboard(Scheduler &scheduler,
                                                             const TransferLimits &limits) override
    {
        return X11Pasteboard::create(scheduler, server_.display(), limits);
    }

    bool copyText(const std::string &text) override
    {
        return other_.copy(QByteArray::fromStdString(text)).has_value();
    }

    bool copyUnheard(const std::string &text) override
    {
        return ::copyUnheard(server_.environment(), QByteArray::fromStdString(text));
    }

    bool copySecret(const std::string &text) override
    {
        return other_.copy(QByteArray::fromStdString(text), "secret").has_value();
    }

    bool copyImage() override { return other_.copy("x", "image").has_value(); }

    [[nodiscard]] std::optional<std::string> pasted() override
    {
        const std::optional<QByteArray> text = paste(server_.environment());
        return text ? std::optional(text->toStdString()) : std::nullopt;
    }

    void end() override { server_.end(); }

private:
    XServer server_;
    CopyingProgram other_{server_.environment()};
};

class WaylandSession final : public ClipboardSession {
public:
    explicit WaylandSession(DataControlServer::Protocol protocol)
        : server_(protocol)
    {
    }

    [[nodiscard]] std::unique_ptr<Pasteboard> makePasteboard(Scheduler &scheduler,
                                                             const TransferLimits &limits) override
    {
        return DataControlPasteboard::create(scheduler, {.display = server_.display(), .limits = limits});
    }

    bool copyText(const std::string &text) override
    {
        server_.copy({{plainText, text}});
        return true;
    }

    bool copyUnheard(const std::string &text) override { return copyText(text); }

    bool copySecret(const std::string &text) override
    {
        server_.copy({{"x-kde-passwordManagerHint", "secret"}, {plainText, text}});
        return true;
    }

    bool copyImage() override
    {
        server_.copy({{"image/png", "x"}});
        return true;
    }

    [[nodiscard]] std::optional<std::string> pasted() override { return server_.pastedText(plainText); }

    void end() override { server_.stop(); }

private:
    DataControlServer server_;
};

} // namespace

std::unique_ptr<ClipboardSession> makeX11Session()
{
    return std::make_unique<X11Session>();
}

std::unique_ptr<ClipboardSession> makeExtSession()
{
    return std::make_unique<WaylandSession>(DataControlServer::Protocol::ext);
}

std::unique_ptr<ClipboardSession> makeWlrSession()
{
    return std::make_unique<WaylandSession>(DataControlServer::Protocol::wlr);
}
