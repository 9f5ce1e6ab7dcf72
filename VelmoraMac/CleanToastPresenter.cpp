#include "CleanToastPresenter.h"

#include <QVariant>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
constexpr int rightMargin = 18;
constexpr int topMargin = 10;
constexpr int cornerRadius = 24;

View toastView(const CleaningResult &result, bool offersCleaning)
{
    return {QUrl(u"qrc:/qt/qml/VelmoraMac/Toast/CleanToastView.qml"_s),
            {{u"result"_s, QVariant::fromValue(result)}, {u"offersCleaning"_s, offersCleaning}},
            {}};
}

PanelOptions toastOptions(QSize size, bool acceptsMouse)
{
    return {.size = size,
            .acceptsMouse = acceptsMouse,
            .cornerRadius = cornerRadius,
            .cancelled = {},
            .followsUser = true};
}
} // namespace

CleanToastPresenter::CleanToastPresenter(PanelFactory &panels, const Screens &screens, Scheduler &scheduler)
    : panels_(panels)
    , screens_(screens)
    , expiry_(scheduler)
{
}

void CleanToastPresenter::show(const CleaningResult &result)
{
    if (accepted_ == result) { // The user has just asked for it.
        accepted_.reset();
        return;
    }
    present(toastView(result, false), toastOptions(QSize(342, 86), false), 2250ms);
}

void CleanToastPresenter::showTrackerWarning(const CleaningResult &result, std::function<void()> cleanAction)
{
    const Warning warning{result, std::move(cleanAction)};
    View view = toastView(result, true);
    view.requests.push_back({"cleanRequested", [this, warning] { accept(warning); }});
    present(view, toastOptions(QSize(342, 118), true), 6s);
    warning_ = warning;
}

void CleanToastPresenter::acceptWarning()
{
    if (const auto warning = warning_)
        accept(*warning);
}

void CleanToastPresenter::accept(const Warning &warning)
{
    accepted_ = warning.result;
    warning.cleanAction();
    dismiss();
}

void CleanToastPresenter::present(const View &content, const PanelOptions &options,
                                  std::chrono::nanoseconds duration)
{
    accepted_.reset();
    expiry_.startOver();
    auto panel = panels_.makePanel(content, options);
    panel->setFrame(position(options.size), FrameChange::atOnce);
    dismiss();
    panel_ = std::move(panel);
    panel_->orderFront();
    expiry_.after(duration, [this] { dismiss(); });
}

QRect CleanToastPresenter::position(QSize size) const
{
    const QRect area = screens_.mainWorkArea();
    QRect frame(QPoint(), size);
    frame.moveTopRight(area.topRight() + QPoint(-rightMargin, topMargin));
    return frame;
}

void CleanToastPresenter::dismiss()
{
    if (panel_)
        panel_->orderOut();
    panel_ = nullptr;
    warning_.reset();
}
