#include "UpdateWindow.h"

#include <QVariant>

using namespace Qt::StringLiterals;

UpdateWindow::UpdateWindow(AppState &appState, AppWindowFactory &windows)
    : appState_(appState)
    , windows_(windows)
{
    connect(&appState, &AppState::languageChanged, this, &UpdateWindow::changed);
}

void UpdateWindow::show(const UpdateReport &report, Attention attention)
{
    report_ = report;
    Q_EMIT changed();
    if (window_) {
        // The user closed it during a step without an answer; this step asks for one.
        if (!window_->isVisible() && !isWorking())
            window_->showQuietly();
        return;
    }
    const View view{QUrl(u"qrc:/qt/qml/VelmoraMac/Updates/UpdateView.qml"_s),
                    {{u"updateWindow"_s, QVariant::fromValue(this)}},
                    {}};
    window_ = windows_.makeWindow(view, {.title = u"Velmora"_s,
                                         .contentSize = QSize(500, 320),
                                         .minimumSize = QSize(500, 220),
                                         .fitsContent = true,
                                         .closed = [this] { close(); }});
    window_->centre();
    if (attention == Attention::front)
        window_->bringToFront();
    else
        window_->showQuietly();
}

void UpdateWindow::bringToFront()
{
    if (window_)
        window_->bringToFront();
}

void UpdateWindow::dismiss()
{
    window_.reset();
}

void UpdateWindow::setAnswerHandler(AnswerHandler handler)
{
    answer_ = std::move(handler);
}

bool UpdateWindow::isWorking() const
{
    return report_.step == UpdateStep::checking || report_.step == UpdateStep::downloading ||
           report_.step == UpdateStep::verifying || report_.step == UpdateStep::installing;
}

double UpdateWindow::progress() const
{
    if (report_.step != UpdateStep::downloading || report_.total <= 0)
        return -1;
    return static_cast<double>(report_.received) / static_cast<double>(report_.total);
}

void UpdateWindow::accept()
{
    if (!texts().accept.isEmpty())
        answer(UpdateAnswer::accept);
}

void UpdateWindow::close()
{
    answer(UpdateAnswer::dismiss);
}

void UpdateWindow::skip()
{
    if (!texts().skip.isEmpty())
        answer(UpdateAnswer::skip);
}

UpdateTexts UpdateWindow::texts() const
{
    return updateTexts(report_, appState_.language());
}

void UpdateWindow::answer(UpdateAnswer answer)
{
    if (window_ && answer_)
        answer_(answer);
}
