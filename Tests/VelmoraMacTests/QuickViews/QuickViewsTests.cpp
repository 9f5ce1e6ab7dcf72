#include <VelmoraMac/QuickViews/QuickViews.h>
#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QFile>
#include <QQuickItem>
#include <QTemporaryDir>
#include <QTest>

#include <Fakes/FakeDesktop.h>
#include <Fakes/VirtualTime.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class PlainWindowManager final : public WindowManager {
public:
    void makePanel(QWindow &, const PanelTraits &traits) override { lastTraits = traits; }

    void giveKeyboard(QWindow &) override { log.append(u"given"_s); }

    void returnKeyboard(QWindow &) override { log.append(u"returned"_s); }

    void place(QWindow &window, const QRect &) override { lastPlaced = &window; }

    [[nodiscard]] bool blendsWindows() const override { return blends_; }

    void setBlendingHandler(std::function<void()> handler) override { blendingChanged_ = std::move(handler); }

    void activate(QWindow &) override {}

    void blend(bool blends)
    {
        blends_ = blends;
        blendingChanged_();
    }

    QWindow *lastPlaced = nullptr;
    PanelTraits lastTraits;
    QStringList log; // Of the keyboard.

private:
    bool blends_ = true;
    std::function<void()> blendingChanged_;
};

class SwitchedAppearance final : public Appearance {
public:
    [[nodiscard]] ColorScheme colorScheme() const override { return scheme_; }

    [[nodiscard]] bool reducesMotion() const override { return false; }

    [[nodiscard]] bool increasesContrast() const override { return false; }

    void addChangeHandler(ChangeHandler handler) override { changed_ = std::move(handler); }

    void become(ColorScheme scheme)
    {
        scheme_ = scheme;
        changed_();
    }

private:
    ColorScheme scheme_ = ColorScheme::light;
    ChangeHandler changed_;
};

} // namespace

class QuickViewsTests : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;
    PlainWindowManager windows_;
    FakeScreens screens_;
    SwitchedAppearance appearance_;
    std::unique_ptr<VirtualTime> time_;
    std::unique_ptr<QuickViews> views_;
    int releases_ = 0;

    [[nodiscard]] std::unique_ptr<Panel> panel(bool takesKeyboard = false,
                                               const std::function<void()> &cancelled = {}) const
    {
        return views_->makePanel(
            {QUrl::fromLocalFile(folder_.filePath(u"View.qml"_s)), {}, {}},
            {.size = QSize(100, 100), .cancelled = cancelled, .takesKeyboard = takesKeyboard});
    }

    static void close(std::unique_ptr<Panel> panel)
    {
        panel.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

private Q_SLOTS:

    void initTestCase()
    {
        QFile file(folder_.filePath(u"View.qml"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("import QtQuick\nItem { }\n");
    }

    void init()
    {
        releases_ = 0;
        time_ = std::make_unique<VirtualTime>();
        views_ =
            std::make_unique<QuickViews>(QuickViews::Dependencies{.windows = windows_,
                                                                  .screens = screens_,
                                                                  .scheduler = *time_,
                                                                  .appearance = appearance_,
                                                                  .releaseMemory = [this] { ++releases_; }});
    }

    void memoryIsGivenBackSoonAfterTheLastViewAndOnceMoreWithTheEngine()
    {
        auto first = panel();
        auto second = panel();
        close(std::move(first));
        time_->pass(2min);
        QCOMPARE(releases_, 0);

        close(std::move(second));
        time_->pass(1999ms);
        QCOMPARE(releases_, 0);
        time_->pass(1ms);
        QCOMPARE(releases_, 1);
        time_->pass(57999ms);
        QCOMPARE(releases_, 1);
        time_->pass(1ms);
        QCOMPARE(releases_, 2);
    }

    void aViewInTheMeantimeKeepsEverything()
    {
        close(panel());
        time_->pass(1s);
        auto open = panel();
        time_->pass(2min);
        QCOMPARE(releases_, 0);
        close(std::move(open));
        time_->pass(2min);
        QCOMPARE(releases_, 2);
    }

    void aWindowThatIsKeptGivesMemoryBackWhenItIsClosed()
    {
        const std::unique_ptr<AppWindow> window =
            views_->makeWindow({QUrl::fromLocalFile(folder_.filePath(u"View.qml"_s)), {}, {}}, {});
        time_->pass(1h);
        QCOMPARE(releases_, 0); // It is about to be shown.
        window->bringToFront();
        time_->pass(1h);
        QCOMPARE(releases_, 0);

        QGuiApplication::allWindows().constFirst()->hide(); // The close button.
        time_->pass(2s);
        QCOMPARE(releases_, 1);
        time_->pass(1h);
        QCOMPARE(releases_, 1); // Its engine stays.

        window->bringToFront();
        QGuiApplication::allWindows().constFirst()->hide();
        time_->pass(1s);
        window->bringToFront();
        time_->pass(1h);
        QCOMPARE(releases_, 1);
    }

    void aPanelIsOpaqueWhileNothingComposites()
    {
        const auto open = panel();
        open->setFrame(QRect(0, 0, 100, 100), FrameChange::atOnce);
        const auto *window = qobject_cast<QQuickView *>(windows_.lastPlaced);
        QVERIFY(window != nullptr);
        QCOMPARE(window->color().alpha(), 0);
        windows_.lastPlaced = nullptr;
        windows_.blend(false);
        QCOMPARE(window->color().alpha(), 255);
        QCOMPARE(windows_.lastPlaced, window); // For its shape.
        windows_.blend(true);
        QCOMPARE(window->color().alpha(), 0);

        windows_.blend(false);
        const auto second = panel();
        second->setFrame(QRect(0, 0, 100, 100), FrameChange::atOnce);
        QCOMPARE(qobject_cast<QQuickView *>(windows_.lastPlaced)->color().alpha(), 255);
        windows_.blend(true);
    }

    void aPanelGetsTheKeyboardOnceItIsOnScreenAndGivesItBack()
    {
        windows_.log.clear();
        int cancellations = 0;
        const auto open = panel(true, [&cancellations] { ++cancellations; });
        QVERIFY(windows_.lastTraits.takesKeyboard);
        open->setFrame(QRect(0, 0, 100, 100), FrameChange::atOnce);
        open->takeKeyboard();
        QCOMPARE(windows_.log, QStringList());
        open->orderFront();
        auto *window = qobject_cast<QQuickView *>(windows_.lastPlaced);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(windows_.log, QStringList{u"given"_s});

        QFocusEvent leaves(QEvent::FocusOut);
        QCoreApplication::sendEvent(window, &leaves);
        QTRY_COMPARE(cancellations, 1);
        QTest::keyClick(window, Qt::Key_Escape);
        QCOMPARE(cancellations, 2);

        open->orderOut();
        QCOMPARE(windows_.log, (QStringList{u"given"_s, u"returned"_s}));
        QCoreApplication::sendEvent(window, &leaves);
        QCoreApplication::processEvents();
        QCOMPARE(cancellations, 2);
    }

    void aPanelOpenedByThePointerLeavesTheKeyboardAlone()
    {
        windows_.log.clear();
        int cancellations = 0;
        const auto open = panel(false, [&cancellations] { ++cancellations; });
        QVERIFY(!windows_.lastTraits.takesKeyboard);
        open->setFrame(QRect(0, 0, 100, 100), FrameChange::atOnce);
        open->orderFront();
        auto *window = qobject_cast<QQuickView *>(windows_.lastPlaced);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QFocusEvent leaves(QEvent::FocusOut);
        QCoreApplication::sendEvent(window, &leaves);
        QCoreApplication::processEvents();
        open->orderOut();
        QCOMPARE(windows_.log, QStringList());
        QCOMPARE(cancellations, 0);
    }

    void aWindowHasTheGroundOfTheThemeBeforeItsFirstFrame()
    {
        const QUrl source = QUrl::fromLocalFile(folder_.filePath(u"View.qml"_s));
        const auto window = views_->makeWindow({source, {}, {}}, {u"Title"_s, QSize(9, 9), QSize(9, 9), {}});
        const auto views = QGuiApplication::allWindows();
        const auto *shown = qobject_cast<QQuickView *>(views.last());
        auto *surroundings = Surroundings::in(*shown->engine());
        QCOMPARE(shown->color(), surroundings->colors().windowBackground);
        QVERIFY(shown->color().lightnessF() < 0.3F);
        surroundings->setTheme(VelmoraTheme::light);
        QVERIFY(shown->color().lightnessF() > 0.8F);
    }

    void aWindowFitsASmallScreenWithItsFrame()
    {
        screens_.workArea = QRect(0, 0, 800, 480);
        const QUrl source = QUrl::fromLocalFile(folder_.filePath(u"View.qml"_s));
        const auto window = views_->makeWindow(
            {source, {}, {}},
            {.title = u"T"_s, .contentSize = QSize(660, 640), .minimumSize = QSize(640, 610)});
        const QWindow *shown = QGuiApplication::allWindows().last();
        QCOMPARE(shown->size(), QSize(660, 446));
        QCOMPARE(shown->minimumSize(), QSize(640, 446));
        screens_.workArea = FakeScreens().workArea;
    }

    void aWindowThatFitsItsContentFollowsIt()
    {
        QFile file(folder_.filePath(u"Tall.qml"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("import QtQuick\nItem { implicitHeight: 150 }\n");
        file.close();
        const auto window = views_->makeWindow({QUrl::fromLocalFile(file.fileName()), {}, {}},
                                               {.title = u"T"_s,
                                                .contentSize = QSize(500, 320),
                                                .minimumSize = QSize(500, 100),
                                                .fitsContent = true});
        auto *shown = qobject_cast<QQuickView *>(QGuiApplication::allWindows().last());
        QCOMPARE(shown->size(), QSize(500, 150));
        shown->rootObject()->setImplicitHeight(210.5);
        QCOMPARE(shown->size(), QSize(500, 211));
        shown->rootObject()->setImplicitHeight(5000);
        QCOMPARE(shown->height(), screens_.workArea.height() - 34);
    }

    void viewsThatOutliveTheFactoryHarmNobody()
    {
        auto open = panel();
        views_->closeAll();
        close(std::move(open));
        views_.reset();
        time_->pass(2min);
        QCOMPARE(releases_, 0);
    }
};

static const RegisteredGuiTest<QuickViewsTests> registered;
#include "QuickViewsTests.moc"
