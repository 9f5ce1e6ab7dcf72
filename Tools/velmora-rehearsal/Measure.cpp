#include "Measure.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QTextStream>
#include <QTimer>

#include <Rehearsal/Scenes.h>

#include <algorithm>
#include <ctime>
#include <vector>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr double frameBudget = 1000.0 / 60;

double processorMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Frames in order, each the time the processor worked for it, in milliseconds.
struct Frames {
    std::vector<double> work;

    // `step` changes something; the frame is done when the window has shown it, or when it sees no need to.
    template<typename Step>
    void add(QQuickWindow *window, Step step)
    {
        QEventLoop untilShown;
        QObject::connect(window, &QQuickWindow::frameSwapped, &untilShown, &QEventLoop::quit);
        const double before = processorMilliseconds();
        step();
        QTimer::singleShot(16ms, Qt::PreciseTimer, &untilShown, &QEventLoop::quit);
        untilShown.exec();
        work.push_back(processorMilliseconds() - before);
    }

    void print(const QString &what) const
    {
        std::vector<double> sorted = work;
        std::sort(sorted.begin(), sorted.end());
        double sum = 0;
        for (const double time : sorted)
            sum += time;
        const auto at = [&sorted](double part) {
            return sorted[static_cast<size_t>(part * static_cast<double>(sorted.size() - 1))];
        };
        const double mean = sum / static_cast<double>(sorted.size());
        const auto late =
            std::count_if(sorted.begin(), sorted.end(), [](double t) { return t > frameBudget; });
        QTextStream(stdout)
            << u"%1: %2 frames, mean %3 ms, p50 %4, p95 %5, max %6; over %7 ms: %8; %9 % of a core\n"_s
                   .arg(what, -26)
                   .arg(sorted.size())
                   .arg(mean, 0, 'f', 2)
                   .arg(at(0.5), 0, 'f', 2)
                   .arg(at(0.95), 0, 'f', 2)
                   .arg(sorted.back(), 0, 'f', 2)
                   .arg(frameBudget, 0, 'f', 1)
                   .arg(late)
                   .arg(100 * mean / frameBudget, 0, 'f', 1);
    }
};

// The time from asking for the popover to its first frame on screen, in milliseconds.
double firstFrame(Stage &stage)
{
    QElapsedTimer timer;
    timer.start();
    stage.showPopover();
    stage.pass(16ms);
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void measurePopover()
{
    StageSetup setup = everydaySetup();
    setup.theme = VelmoraTheme::aurora;
    Stage stage(setup);
    stage.state->record(shopResult());
    const double cold = firstFrame(stage);
    stage.clear();
    const double warm = firstFrame(stage);
    QTextStream(stdout)
        << u"first frame: %1 ms cold, %2 ms warm\n"_s.arg(cold, 0, 'f', 1).arg(warm, 0, 'f', 1);

    Frames opening;
    for (int frame = 0; frame < 36; ++frame)
        opening.add(stage.window(), [&stage] { stage.clock().pass(16667us); });
    opening.print(u"popover opening (0.6 s)"_s);

    stage.pass(1000ms);
    Frames backdrop;
    for (int frame = 0; frame < 600; ++frame)
        backdrop.add(stage.window(), [&stage] { stage.clock().pass(16667us); });
    backdrop.print(u"moving backdrop (10 s)"_s);

    Frames closing;
    stage.popoverAnimation.requestClose();
    for (int frame = 0; frame < 15; ++frame)
        closing.add(stage.window(), [&stage] { stage.clock().pass(16667us); });
    closing.print(u"popover closing (0.25 s)"_s);
}

void measureHistory()
{
    Stage stage(everydaySetup());
    fillHistory(stage, 30);
    QQuickItem *settings = stage.showSettings(AppTab::history);
    auto *list = settings->findChild<QQuickItem *>(u"historyList"_s);
    if (list == nullptr)
        return;
    const double way = list->property("contentHeight").toDouble() - list->height();
    Frames scrolling;
    constexpr int frames = 240;
    for (int frame = 0; frame < frames; ++frame)
        scrolling.add(stage.window(),
                      [list, way, frame] { list->setProperty("contentY", way * frame / frames); });
    scrolling.print(u"history of 30, scrolled"_s);
}

} // namespace

int measureFrames()
{
    measurePopover();
    measureHistory();
    return 0;
}
