#include <VelmoraMac/Texts/UpdateTexts.h>
#include <VelmoraMac/Updates/UpdateWindow.h>

#include <QTest>

#include <Fakes/FakeAppWindows.h>
#include <Rehearsal/ItemTree.h>
#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize usualSize(500, 320);    // As the window opens.
constexpr QSize smallestSize(500, 220); // As small as the user can make it.
constexpr int longestNotes = 20'000;    // Characters.

UpdateReport reportOf(UpdateStep step)
{
    UpdateReport report;
    report.step = step;
    report.version = u"2.0"_s;
    report.ownVersion = u"1.0"_s;
    if (step == UpdateStep::failed)
        report.problem = UpdateProblem::badKey; // The longest message.
    if (step == UpdateStep::managed)
        report.manager = u"apt (dpkg)"_s;
    if (step == UpdateStep::found)
        report.notes = u"What is new: <b>this</b>"_s;
    if (step == UpdateStep::downloading) {
        report.received = 1;
        report.total = 4;
    }
    return report;
}

} // namespace

// The update window's view in every step, as its user finds it.
class UpdateViewTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void theBarShowsAPieceOfAQuarterUntilTheSizeIsKnown()
    {
        Stage stage(everydaySetup());
        QQuickItem *view = stage.showUpdate(reportOf(UpdateStep::checking));
        const auto *bar = view->findChild<QQuickItem *>(u"bar"_s);
        const QQuickItem *piece = bar->childItems().constFirst();
        QCOMPARE(piece->width(), bar->width() / 4);
        const double start = piece->x();
        stage.pass(std::chrono::milliseconds(300));
        QVERIFY(piece->x() > start + 5);
        QVERIFY(piece->x() + piece->width() <= bar->width());
    }

    void itIsAsTallAsItsStepNeeds()
    {
        Stage stage(everydaySetup());
        UpdateReport report = foundUpdate();
        const double withNotes = stage.showUpdate(report)->implicitHeight();
        report.notes = u"One line."_s;
        const double withOneLine = stage.showUpdate(report)->implicitHeight();
        report.notes.clear();
        report.step = UpdateStep::ready;
        QQuickItem *ready = stage.showUpdate(report);
        QVERIFY(withNotes > withOneLine + 60);
        QVERIFY2(withOneLine > ready->implicitHeight(), qPrintable(QString::number(withOneLine)));
        QVERIFY2(ready->implicitHeight() < 170, qPrintable(QString::number(ready->implicitHeight())));
        report.step = UpdateStep::failed;
        report.problem = UpdateProblem::badSignature;
        stage.updateWindow->show(report, UpdateUserDriver::Attention::front); // Follows at once.
        QVERIFY(ready->implicitHeight() > 100);
    }

    void initTestCase()
    {
        prepareFont(u"Inter"_s);
        QAccessible::setActive(true);
    }

    void everyStepShowsItsWordsAndButtons_data()
    {
        QTest::addColumn<UpdateStep>("step");
        QTest::addColumn<AppLanguage>("language");
        for (int step = 0; step <= static_cast<int>(UpdateStep::failed); ++step) {
            QTest::addRow("step %d, English", step) << static_cast<UpdateStep>(step) << AppLanguage::english;
            QTest::addRow("step %d, German", step) << static_cast<UpdateStep>(step) << AppLanguage::german;
        }
    }

    void everyStepShowsItsWordsAndButtons()
    {
        QFETCH(UpdateStep, step);
        QFETCH(AppLanguage, language);
        Shown shown(reportOf(step), language);
        QVERIFY2(shown.view != nullptr, qPrintable(shown.stage.warnings.join(u'\n')));
        QCOMPARE(shown.stage.warnings, QStringList());
        QCOMPARE(shown.windows.options.contentSize, usualSize);
        QCOMPARE(shown.windows.options.minimumSize, smallestSize);

        QStringList expected{shown.window.headline(),     shown.window.message(),
                             shown.window.notes(),        shown.window.skipTitle(),
                             shown.window.dismissTitle(), shown.window.acceptTitle()};
        expected.removeAll(QString());
        QCOMPARE(ItemTree::texts(*shown.view), expected);
    }

    void whatHindersAnUpdateIsNamed_data()
    {
        QTest::addColumn<UpdateStep>("step");
        QTest::addColumn<UpdateProblem>("problem");
        QTest::newRow("shared folder") << UpdateStep::managed << UpdateProblem::sharedFolder;
        QTest::newRow("foreign file at the start") << UpdateStep::managed << UpdateProblem::foreignFile;
        QTest::newRow("foreign file later") << UpdateStep::failed << UpdateProblem::foreignFile;
    }

    void whatHindersAnUpdateIsNamed()
    {
        QFETCH(UpdateStep, step);
        QFETCH(UpdateProblem, problem);
        UpdateReport report;
        report.step = step;
        report.problem = problem;
        report.place = u"/opt/velmora/notes.txt"_s;
        for (const AppLanguage language : {AppLanguage::english, AppLanguage::german}) {
            const UpdateTexts texts = updateTexts(report, language);
            QVERIFY(texts.message.contains(report.place));
            QVERIFY(!texts.headline.isEmpty() && !texts.accept.isEmpty());
        }
    }

    void nothingIsCoveredOrCutOff_data() { everyStepShowsItsWordsAndButtons_data(); }

    void nothingIsCoveredOrCutOff()
    {
        QFETCH(UpdateStep, step);
        QFETCH(AppLanguage, language);
        for (const QSize size : {usualSize, smallestSize}) {
            Shown shown(reportOf(step), language, size);
            QVERIFY(shown.view != nullptr);
            QList<QRectF> places;
            for (const QString &title :
                 {shown.window.skipTitle(), shown.window.dismissTitle(), shown.window.acceptTitle()}) {
                if (!title.isEmpty())
                    places.append(shown.placeOfButton(title));
            }
            places.append(shown.placeOfText(shown.window.headline()));
            if (!shown.window.message().isEmpty())
                places.append(shown.placeOfText(shown.window.message()));
            for (qsizetype i = 0; i < places.size(); ++i) {
                QVERIFY(QRectF(QPointF(), size).contains(places[i]));
                for (qsizetype j = i + 1; j < places.size(); ++j)
                    QVERIFY(!places[i].intersects(places[j]));
            }
        }
    }

    void keysAnswer_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<UpdateAnswer>("answer");
        QTest::newRow("Return") << Qt::Key_Return << UpdateAnswer::accept;
        QTest::newRow("Enter") << Qt::Key_Enter << UpdateAnswer::accept;
        QTest::newRow("Escape") << Qt::Key_Escape << UpdateAnswer::dismiss;
    }

    void keysAnswer()
    {
        QFETCH(Qt::Key, key);
        Shown shown(reportOf(UpdateStep::found));
        QVERIFY(shown.view != nullptr);
        QTest::keyClick(shown.stage.window(), key);
        QCOMPARE(shown.answers.size(), 1);
        QTEST(shown.answers.first(), "answer");
    }

    void buttonsAnswer_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<UpdateAnswer>("answer");
        QTest::newRow("install") << u"Install Update"_s << UpdateAnswer::accept;
        QTest::newRow("later") << u"Remind Me Later"_s << UpdateAnswer::dismiss;
        QTest::newRow("skip") << u"Skip This Version"_s << UpdateAnswer::skip;
    }

    void buttonsAnswer()
    {
        QFETCH(QString, title);
        Shown shown(reportOf(UpdateStep::found));
        QVERIFY(shown.view != nullptr);
        QTest::mouseClick(shown.stage.window(), Qt::LeftButton, {},
                          shown.placeOfButton(title).center().toPoint());
        QCOMPARE(shown.answers.size(), 1);
        QTEST(shown.answers.first(), "answer");
    }

    void oneStepFollowsTheOther()
    {
        Shown shown(reportOf(UpdateStep::found));
        QVERIFY(shown.view != nullptr);
        shown.window.show(reportOf(UpdateStep::downloading), UpdateUserDriver::Attention::front);
        QVERIFY(ItemTree::texts(*shown.view).contains(u"1 byte of 4 bytes"_s) ||
                ItemTree::texts(*shown.view).contains(u"1 bytes of 4 bytes"_s));
        QVERIFY(ItemTree::control(*shown.view, u"Install Update"_s) == nullptr);
        shown.window.show(reportOf(UpdateStep::ready), UpdateUserDriver::Attention::front);
        QVERIFY(ItemTree::control(*shown.view, u"Install and Relaunch"_s) != nullptr);
        QCOMPARE(shown.stage.warnings, QStringList());
    }

    void longNotesAreScrolledWithTheKeyboard()
    {
        UpdateReport report = reportOf(UpdateStep::found);
        report.notes = u"word "_s.repeated(longestNotes / 5);
        Shown shown(report);
        QVERIFY(shown.view != nullptr);
        const QRectF before = shown.placeOfText(report.notes);
        QTest::keyClick(shown.stage.window(), Qt::Key_Tab);
        for (int i = 0; i < 5; ++i)
            QTest::keyClick(shown.stage.window(), Qt::Key_Down);
        QVERIFY(shown.placeOfText(report.notes).top() < before.top());
    }

private:
    struct Shown {
        explicit Shown(const UpdateReport &report, AppLanguage language = AppLanguage::english,
                       QSize size = usualSize)
            : stage({.language = language})
            , window(*stage.state, windows)
        {
            window.setAnswerHandler([this](UpdateAnswer answer) { answers.append(answer); });
            window.show(report, UpdateUserDriver::Attention::front);
            view = stage.show(u"Updates/UpdateView"_s, windows.view.properties, size);
            if (view == nullptr)
                return;
            stage.window()->requestActivate();
            if (!QTest::qWaitForWindowActive(stage.window()))
                view = nullptr;
        }

        ~Shown() { stage.clear(); } // The view looks at the window.
        Q_DISABLE_COPY_MOVE(Shown)

        [[nodiscard]] QRectF placeOfButton(const QString &title) const
        {
            const QQuickItem *button = ItemTree::control(*view, title);
            return button == nullptr ? QRectF() : button->mapRectToScene(button->boundingRect());
        }

        [[nodiscard]] QRectF placeOfText(const QString &text) const
        {
            for (const QQuickItem *item : view->findChildren<QQuickItem *>()) {
                if (item->inherits("QQuickText") && item->property("text") == text)
                    return item->mapRectToScene(item->boundingRect());
            }
            return {};
        }

        Stage stage;
        FakeAppWindows windows;
        UpdateWindow window;
        QList<UpdateAnswer> answers;
        QQuickItem *view = nullptr;
    };
};

static const RegisteredGuiTest<UpdateViewTests> registered;
#include "UpdateViewTests.moc"
