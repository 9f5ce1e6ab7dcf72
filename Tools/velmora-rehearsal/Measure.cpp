#include "Measure.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QProcess>
#include <QTextStream>
#include <QTimer>

#include <Rehearsal/Scenes.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <numeric>
#include <vector>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr double frameBudget = 1000.0 / 60;
constexpr int rounds = 15; // Of what is short; the middle one is printed.

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

    [[nodiscard]] double sum() const { return std::accumulate(work.begin(), work.end(), 0.0); }

    void print(const QString &what) const
    {
        std::vector<double> sorted = work;
        std::sort(sorted.begin(), sorted.end());
        const auto at = [&sorted](double part) {
            return sorted[static_cast<size_t>(part * static_cast<double>(sorted.size() - 1))];
        };
        const double mean = sum() / static_cast<double>(sorted.size());
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

// Of several times the same, the one with the middle sum.
Frames middleOf(std::vector<Frames> &times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end(),
                     [](const Frames &a, const Frames &b) { return a.sum() < b.sum(); });
    return *middle;
}

// The time from asking for the popover to its first frame on screen, in milliseconds.
double firstFrame(Stage &stage)
{
    QElapsedTimer timer;
    timer.start();
    stage.showPopover();
    stage.pass(16ms);
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

StageSetup popoverSetup()
{
    StageSetup setup = everydaySetup();
    setup.theme = VelmoraTheme::aurora;
    return setup;
}

double median(std::vector<double> &values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// A process has one first popover, so this starts several.
double coldFirstFrame()
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(), {u"--measure-first"_s});
        if (process.waitForFinished() && process.exitCode() == 0)
            times.push_back(process.readAllStandardOutput().trimmed().toDouble());
    }
    return times.empty() ? std::nan("") : median(times);
}

Frames framesOf(Stage &stage, int count)
{
    Frames frames;
    for (int frame = 0; frame < count; ++frame)
        frames.add(stage.window(), [&stage] { stage.clock().pass(16667us); });
    return frames;
}

void measurePopover()
{
    Stage stage(popoverSetup());
    stage.state->record(shopResult());
    firstFrame(stage);
    std::vector<double> warm;
    std::vector<Frames> opening;
    std::vector<Frames> closing;
    for (int round = 0; round < rounds; ++round) {
        stage.clear();
        warm.push_back(firstFrame(stage));
        opening.push_back(framesOf(stage, 36));
        stage.pass(1000ms);
        if (round == 0)
            framesOf(stage, 600).print(u"moving backdrop (10 s)"_s);
        stage.popoverAnimation.requestClose();
        closing.push_back(framesOf(stage, 15));
    }
    QTextStream(stdout) << u"first frame: %1 ms cold, %2 ms warm\n"_s.arg(coldFirstFrame(), 0, 'f', 1)
                               .arg(median(warm), 0, 'f', 1);
    middleOf(opening).print(u"popover opening (0.6 s)"_s);
    middleOf(closing).print(u"popover closing (0.25 s)"_s);
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

int measureFirstFrame()
{
    Stage stage(popoverSetup());
    stage.state->record(shopResult());
    QTextStream(stdout) << firstFrame(stage) << '\n';
    return 0;
}
