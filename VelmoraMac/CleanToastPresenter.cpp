#include "CleanToastPresenter.h"

#include <QVariant>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
constexpr int rightMargin = 18;
constexpr int topMargin = 10;
constexpr int cornerRadius = 24;
} // namespace

CleanToastPresenter::CleanToastPresenter(AppState &appState, PanelFactory &panels, const Screens &screens,
                                         Scheduler &scheduler)
    : appState_(appState)
    , panels_(panels)
    , screens_(screens)
    , expiry_(scheduler)
{
}

View CleanToastPresenter::toastView(const CleaningResult &result, bool offersCleaning) const
{
    return {QUrl(u"qrc:/qt/qml/VelmoraMac/Toast/CleanToastView.qml"_s),
            {{u"appState"_s, QVariant::fromValue(&appState_)},
             {u"result"_s, QVariant::fromValue(result)},
             {u"offersCleaning"_s, offersCleaning}},
            {}};
}

void CleanToastPresenter::show(const CleaningResult &result)
{
    present(toastView(result, false), {QSize(342, 86), false, cornerRadius, {}}, 2250ms);
}

void CleanToastPresenter::showTrackerWarning(const CleaningResult &result, std::function<void()> cleanAction)
{
    View view = toastView(result, true);
    view.requests.push_back({"cleanRequested", [this, action = std::move(cleanAction)] {
                                 action();
                                 dismiss();
                             }});
    present(view, {QSize(342, 118), true, cornerRadius, {}}, 6s);
}

void CleanToastPresenter::present(const View &content, const PanelOptions &options,
                                  std::chrono::nanoseconds duration)
{
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
}
