#include <VelmoraMac/QuickViews/QuickViews.h>

#include <QFile>
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
    void makePanel(QWindow &, const PanelTraits &) override {}

    void place(QWindow &, const QRect &) override {}

    [[nodiscard]] bool blendsWindows() const override { return true; }

    void activate(QWindow &) override {}
};

class LightAppearance final : public Appearance {
public:
    [[nodiscard]] ColorScheme colorScheme() const override { return ColorScheme::light; }

    [[nodiscard]] bool reducesMotion() const override { return false; }

    void addChangeHandler(ChangeHandler) override {}
};

} // namespace

class QuickViewsTests : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;
    PlainWindowManager windows_;
    FakeScreens screens_;
    LightAppearance appearance_;
    std::unique_ptr<VirtualTime> time_;
    std::unique_ptr<QuickViews> views_;
    int releases_ = 0;

    [[nodiscard]] std::unique_ptr<Panel> panel() const
    {
        return views_->makePanel({QUrl::fromLocalFile(folder_.filePath(u"View.qml"_s)), {}, {}},
                                 {QSize(100, 100), true, 0, {}});
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
