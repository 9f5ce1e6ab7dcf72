#include "Stage.h"

#include <VelmoraMac/QuickViews/ViewEnvironment.h>

#include <QEasingCurve>
#include <QFont>
#include <QGuiApplication>
#include <QQmlError>
#include <QQmlIncubationController>
#include <QtQml/qqmlextensionplugin.h>

#include <limits>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

Q_IMPORT_QML_PLUGIN(VelmoraMacPlugin)

namespace {

constexpr auto frame = 16ms;
constexpr int popoverWidth = 306;
constexpr int shortPopover = 386;
constexpr int tallPopover = 536;                                // Once there is a result.
constexpr auto growthTime = std::chrono::duration<double>(0.2); // As the panel of the application.
constexpr QColor desk(0x9c, 0xa9, 0xb5);                        // The ground behind a translucent window.

void fill(MemoryDefaultsStore &store, const StageSetup &setup)
{
    store.place(u"appTheme"_s, rawValue(setup.theme));
    store.place(u"language"_s, rawValue(setup.language));
    store.place(u"totalCleaned"_s, qint64{setup.links});
    store.place(u"totalTrackersRemoved"_s, qint64{setup.trackers});
    store.place(u"cleanedToday"_s, qint64{setup.today});
    store.place(u"todayKey"_s, u"2026-03-07"_s); // The day on the wall of the fakes.
}

} // namespace

void prepareFont(const QString &family)
{
    QFont font(family);
    font.setHintingPreference(QFont::PreferNoHinting);
    QGuiApplication::setFont(font);
}

Stage::Stage(const StageSetup &setup)
{
    fill(fakes.defaults, setup);
    state = std::make_unique<AppState>(fakes.dependencies());
    updates = std::make_unique<UpdateController>(fakes.bundle, UpdateController::MakeUpdater());
    updateWindow = std::make_unique<UpdateWindow>(*state, windows);
    engine_.addImportPath(u"qrc:/qt/qml"_s);
    QObject::connect(&engine_, &QQmlEngine::warnings, &engine_, [this](const QList<QQmlError> &errors) {
        for (const QQmlError &error : errors)
            warnings.append(error.toString());
    });
    ViewEnvironment::provide(engine_, *state);
    clock().setVirtual();
    surroundings().setDarkAppearance(setup.darkAppearance);
    surroundings().setReducedMotion(setup.reducedMotion);
}

QQuickItem *Stage::show(const QString &name, const QVariantMap &properties, QSize size)
{
    showsPopover_ = false;
    view_ = std::make_unique<QQuickView>(&engine_, nullptr);
    view_->setColor(desk);
    view_->setResizeMode(QQuickView::SizeRootObjectToView);
    view_->setInitialProperties(properties);
    view_->resize(size);
    view_->setSource(QUrl(u"qrc:/qt/qml/VelmoraMac/"_s + name + u".qml"_s));
    for (const QQmlError &error : view_->errors())
        warnings.append(error.toString());
    if (view_->rootObject() == nullptr)
        return nullptr;
    view_->show();
    QCoreApplication::processEvents();
    return view_->rootObject();
}

QQuickItem *Stage::showPopover()
{
    QQuickItem *popover =
        show(u"PopoverView"_s, {{u"popoverAnimation"_s, QVariant::fromValue(&popoverAnimation)}},
             {popoverWidth, state->hasLastResult() ? tallPopover : shortPopover});
    showsPopover_ = true;
    growth_ = 0ms;
    return popover;
}

QQuickItem *Stage::showToast(const CleaningResult &result, bool offersCleaning)
{
    return show(u"Toast/CleanToastView"_s,
                {{u"result"_s, QVariant::fromValue(result)}, {u"offersCleaning"_s, offersCleaning}},
                {342, offersCleaning ? 118 : 86});
}

QQuickItem *Stage::showSettings(AppTab tab, QSize size)
{
    state->setActiveAppTab(tab);
    return show(u"SettingsView"_s,
                {{u"updateController"_s, QVariant::fromValue(updates.get())},
                 {u"notifications"_s, QVariant::fromValue(&notifications)}},
                size);
}

QQuickItem *Stage::showDetails(const CleanHistoryEntry &entry)
{
    return show(u"History/HistoryEntryDetailView"_s, {{u"entry"_s, QVariant::fromValue(entry)}}, {720, 560});
}

QQuickItem *Stage::showUpdate(const UpdateReport &report, QSize size)
{
    updateWindow->show(report, UpdateUserDriver::Attention::front);
    QQuickItem *view =
        show(u"Updates/UpdateView"_s, {{u"updateWindow"_s, QVariant::fromValue(updateWindow.get())}},
             size.isEmpty() ? QSize(500, 320) : size);
    if (view != nullptr && size.isEmpty())
        view_->resize(500, qCeil(view->implicitHeight()));
    return view;
}

void Stage::pass(std::chrono::milliseconds time)
{
    for (auto left = time; left > 0ms; left -= frame) {
        const auto step = std::min<std::chrono::milliseconds>(left, frame);
        growPopover(step);
        clock().pass(step);
        QCoreApplication::processEvents();
        finishIncubation();
    }
}

// Lists make the rows beyond their view in spare time. Such a row is drawn, unfinished, over the first one for that long.
void Stage::finishIncubation()
{
    while (view_->incubationController()->incubatingObjectCount() > 0)
        view_->incubationController()->incubateFor(std::numeric_limits<int>::max());
    QCoreApplication::processEvents();
}

void Stage::growPopover(std::chrono::milliseconds step)
{
    if (!showsPopover_ || !state->hasLastResult() || view_->height() == tallPopover)
        return;
    growth_ += step;
    const double part = std::min(1.0, std::chrono::duration<double>(growth_) / growthTime);
    const double eased = QEasingCurve(QEasingCurve::InOutQuad).valueForProgress(part);
    view_->resize(popoverWidth, qRound(shortPopover + (tallPopover - shortPopover) * eased));
}

QImage Stage::picture()
{
    QCoreApplication::processEvents();
    return view_->grabWindow();
}
