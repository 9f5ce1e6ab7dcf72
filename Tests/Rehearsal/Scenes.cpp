#include "Scenes.h"

#include <Fakes/UtcTime.h>

#include <algorithm>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr auto settled = 2000ms; // All springs are at rest; the backdrop has only begun to drift.

CleaningResult unchangedResult()
{
    const QString link = u"https://example.org/articles/quiet-computing?page=2"_s;
    return {link, link, {}};
}

QQuickItem *popoverWith(Stage &stage, const CleaningResult &result)
{
    stage.state->record(result);
    return stage.showPopover();
}

std::vector<Scene> popoverScenes()
{
    return {
        {u"popover-waiting"_s, true, [](Stage &stage) { return stage.showPopover(); }, settled},
        {u"popover-paused"_s, true,
         [](Stage &stage) {
             stage.state->setAutoCleanEnabled(false);
             return stage.showPopover();
         },
         settled},
        {u"popover-cleaned"_s, true, [](Stage &stage) { return popoverWith(stage, shopResult()); }, settled},
        {u"popover-protected"_s, true, [](Stage &stage) { return popoverWith(stage, unchangedResult()); },
         settled},
        {u"popover-active"_s, true,
         [](Stage &stage) {
             QQuickItem *popover = popoverWith(stage, shopResult());
             stage.pass(1500ms);
             stage.state->record({longEntry().originalText, longEntry().cleanedText, {u"utm_source"_s}});
             return popover; // Half a second into the pulse.
         },
         500ms},
    };
}

// On the way from one state to another.
std::vector<Scene> popoverMotionScenes()
{
    return {
        {u"popover-growing"_s, true,
         [](Stage &stage) {
             QQuickItem *popover = stage.showPopover();
             stage.pass(settled);
             stage.state->record(shopResult());
             return popover;
         },
         96ms},
        {u"popover-toggling"_s, true,
         [](Stage &stage) {
             QQuickItem *popover = popoverWith(stage, shopResult());
             stage.pass(settled);
             stage.state->setAutoCleanEnabled(false);
             return popover;
         },
         96ms},
        {u"popover-recolouring"_s, true,
         [](Stage &stage) {
             QQuickItem *popover = popoverWith(stage, shopResult());
             stage.pass(settled);
             stage.state->setAppTheme(stage.state->appTheme() == VelmoraTheme::light ? VelmoraTheme::aurora
                                                                                     : VelmoraTheme::light);
             return popover;
         },
         96ms},
        {u"popover-rolling"_s, true,
         [](Stage &stage) {
             QQuickItem *popover = popoverWith(stage, shopResult());
             stage.pass(settled);
             stage.state->record(shopResult());
             return popover;
         },
         96ms},
        {u"popover-opening"_s, true, [](Stage &stage) { return popoverWith(stage, shopResult()); }, 260ms},
    };
}

std::vector<Scene> popoverClosingScenes()
{
    return {
        {u"popover-closing"_s, true,
         [](Stage &stage) {
             QQuickItem *popover = popoverWith(stage, shopResult());
             stage.pass(settled);
             stage.popoverAnimation.requestClose();
             return popover;
         },
         64ms},
    };
}

std::vector<Scene> toastScenes()
{
    return {
        {u"toast-cleaned"_s, false, [](Stage &stage) { return stage.showToast(shopResult(), false); },
         settled},
        {u"toast-warning"_s, false, [](Stage &stage) { return stage.showToast(shopResult(), true); },
         settled},
        {u"toast-entering"_s, false, [](Stage &stage) { return stage.showToast(shopResult(), true); }, 96ms},
    };
}

std::vector<Scene> settingsScenes()
{
    return {
        {u"settings-general"_s, true, [](Stage &stage) { return stage.showSettings(AppTab::general); },
         settled},
        {u"settings-general-whole"_s, true,
         [](Stage &stage) {
             return stage.showSettings(AppTab::general, {660, 1180});
         },
         settled},
        {u"settings-cleaning"_s, true,
         [](Stage &stage) {
             stage.state->setIgnoredDomainsText(u"intranet.example\nshop.example.org\n"_s);
             return stage.showSettings(AppTab::cleaning);
         },
         settled},
        {u"settings-history"_s, true,
         [](Stage &stage) {
             fillHistory(stage, 30);
             return stage.showSettings(AppTab::history);
         },
         settled},
        {u"settings-history-empty"_s, true, [](Stage &stage) { return stage.showSettings(AppTab::history); },
         settled},
        {u"details"_s, true, [](Stage &stage) { return stage.showDetails(longEntry()); }, settled},
    };
}

std::vector<Scene> updateScenes()
{
    const auto scene = [](const QString &name, const UpdateReport &report) {
        return Scene{name, false, [report](Stage &stage) { return stage.showUpdate(report); }, settled};
    };
    UpdateReport report = foundUpdate();
    std::vector<Scene> scenes{scene(u"update-found"_s, report)};
    report.notes.clear();
    report.step = UpdateStep::downloading;
    report.received = 3'400'000;
    report.total = 8'000'000;
    scenes.push_back(scene(u"update-downloading"_s, report));
    report.step = UpdateStep::ready;
    scenes.push_back(scene(u"update-ready"_s, report));
    report.step = UpdateStep::failed;
    report.problem = UpdateProblem::badSignature;
    scenes.push_back(scene(u"update-failed"_s, report));
    report.step = UpdateStep::permission;
    scenes.push_back(scene(u"update-permission"_s, report));
    return scenes;
}

} // namespace

StageSetup everydaySetup()
{
    StageSetup setup;
    setup.links = 1284;
    setup.trackers = 5071;
    setup.today = 17;
    return setup;
}

CleaningResult shopResult()
{
    return {
        u"https://shop.example.com/products/blue-kettle?utm_source=newsletter&utm_medium=email&fbclid=IwAR0x7"_s,
        u"https://shop.example.com/products/blue-kettle"_s,
        {u"utm_source"_s, u"utm_medium"_s, u"fbclid"_s}};
}

CleanHistoryEntry longEntry()
{
    constexpr qsizetype length = 4000;
    CleanHistoryEntry entry;
    entry.cleanedText = u"https://maps.example.net/route?stops="_s;
    for (int stop = 1; entry.cleanedText.size() < length - 23; ++stop)
        entry.cleanedText += u"stop-%1%2C"_s.arg(stop);
    entry.originalText = entry.cleanedText + u"&utm_source=share-sheet"_s;
    entry.removedCount = 1;
    entry.removedParameterNames = {u"utm_source"_s};
    entry.setCleanedAt(utcTime(QDate(2026, 3, 7), QTime(10, 11)));
    return entry;
}

UpdateReport foundUpdate()
{
    UpdateReport report;
    report.step = UpdateStep::found;
    report.version = u"0.2.0"_s;
    report.ownVersion = u"0.1.9"_s;
    for (int i = 1; i <= 12; ++i)
        report.notes +=
            u"• Note %1 of this release, long enough to need a second line in a window as wide as this.\n"_s
                .arg(i);
    return report;
}

void fillHistory(Stage &stage, int entries)
{
    for (int i = entries; i > 0; --i) {
        const QString clean = u"https://news.example.org/2026/03/story-%1"_s.arg(i);
        QStringList names{u"utm_source"_s, u"utm_campaign"_s};
        QString original = clean + u"?utm_source=feed&utm_campaign=spring"_s;
        if (i % 3 == 0) {
            names.append(u"gclid"_s);
            original += u"&gclid=Cj0KCQiA-9_aBhDGARIsAG3a%1"_s.arg(i);
        }
        stage.fakes.time.pass(37min);
        stage.state->record({original, clean, names});
    }
}

const std::vector<Scene> &allScenes()
{
    static const std::vector<Scene> scenes = [] {
        std::vector<Scene> all;
        for (const auto &group : {popoverScenes(), popoverMotionScenes(), popoverClosingScenes(),
                                  toastScenes(), settingsScenes(), updateScenes()})
            all.insert(all.end(), group.begin(), group.end());
        return all;
    }();
    return scenes;
}

const Scene *sceneNamed(const QString &name)
{
    const auto found = std::find_if(allScenes().begin(), allScenes().end(),
                                    [&name](const Scene &scene) { return scene.name == name; });
    return found != allScenes().end() ? &*found : nullptr;
}
