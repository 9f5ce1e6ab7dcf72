#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>

#include <Rehearsal/ItemTree.h>
#include <Rehearsal/Stage.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize tall(660, 1000);

// A copy of another program that notices when it is asked for. A real owner may hang at any such question.
class WatchedCopy : public QMimeData {
public:
    explicit WatchedCopy(int &questions)
        : questions_(questions)
    {
    }

    [[nodiscard]] bool hasFormat(const QString &type) const override
    {
        ++questions_;
        return QMimeData::hasFormat(type);
    }

    [[nodiscard]] QStringList formats() const override
    {
        ++questions_;
        return {u"text/plain"_s};
    }

protected:
    [[nodiscard]] QVariant retrieveData(const QString &, QMetaType) const override
    {
        ++questions_;
        return u"example.org"_s;
    }

private:
    int &questions_;
};

} // namespace

class TextAreaClipboardTests : public QObject {
    Q_OBJECT

    int questions_ = 0;

    // Another program copies; how often its copy is asked for.
    [[nodiscard]] int questionsOfACopy()
    {
        QGuiApplication::clipboard()->setMimeData(new WatchedCopy(questions_));
        questions_ = 0; // Taking it over may have asked.
        Q_EMIT QGuiApplication::clipboard()->dataChanged();
        QCoreApplication::processEvents();
        return questions_;
    }

    static QQuickItem *showEditor(Stage &stage)
    {
        QQuickItem *settings = stage.showSettings(AppTab::cleaning);
        QQuickItem *editor = ItemTree::control(*settings, u"Ignored Domains"_s);
        QTest::mouseClick(stage.window(), Qt::LeftButton, {}, ItemTree::middle(*editor));
        return editor;
    }

    static void press(Stage &stage, QKeySequence::StandardKey keys)
    {
        QTest::keySequence(stage.window(), QKeySequence(keys));
    }

private Q_SLOTS:

    void noViewAsksForACopy_data()
    {
        QTest::addColumn<Velmora::AppTab>("tab");
        QTest::newRow("general") << AppTab::general;
        QTest::newRow("cleaning") << AppTab::cleaning;
        QTest::newRow("history") << AppTab::history;
    }

    void noViewAsksForACopy()
    {
        QFETCH(Velmora::AppTab, tab);
        Stage stage({});
        stage.showSettings(tab, tall);
        stage.pass(std::chrono::milliseconds(16));
        QCOMPARE(questionsOfACopy(), 0);

        stage.window()->hide(); // Closed, but kept for a while.
        QCOMPARE(questionsOfACopy(), 0);
    }

    void aMiddleClickAsksNobody()
    {
        Stage stage({});
        QQuickItem *editor = showEditor(stage);
        auto *clipboard = QGuiApplication::clipboard();
        if (clipboard->supportsSelection())
            clipboard->setMimeData(new WatchedCopy(questions_), QClipboard::Selection);
        questions_ = 0;
        QTest::mouseClick(stage.window(), Qt::MiddleButton, {}, ItemTree::middle(*editor));
        QCOMPARE(questions_, 0);
        QCOMPARE(editor->property("text").toString(), QString());
    }

    void pastingReplacesTheSelection()
    {
        Stage stage({});
        stage.state->setIgnoredDomainsText(u"a.example"_s);
        showEditor(stage);
        press(stage, QKeySequence::SelectAll);
        stage.fakes.pasteboard.copy("b.example\r\nc.example");
        press(stage, QKeySequence::Paste);
        QCOMPARE(stage.state->ignoredDomainsText(), u"b.example\nc.example"_s);
        press(stage, QKeySequence::Paste); // At the cursor, which stands behind it.
        QCOMPARE(stage.state->ignoredDomainsText(), u"b.example\nc.exampleb.example\nc.example"_s);
    }

    void anOwnerThatHangsPastesNothing()
    {
        Stage stage({});
        showEditor(stage);
        stage.fakes.pasteboard.copy("a.example");
        stage.fakes.pasteboard.answers = false;
        press(stage, QKeySequence::Paste);
        stage.fakes.time.pass(std::chrono::seconds(20));
        QCOMPARE(stage.state->ignoredDomainsText(), QString());
    }

    void anAnswerAfterTheViewsEndIsDropped()
    {
        Stage stage({});
        showEditor(stage);
        stage.fakes.pasteboard.copy("a.example");
        stage.fakes.pasteboard.answerDelay = std::chrono::seconds(1);
        press(stage, QKeySequence::Paste);
        stage.clear();
        stage.fakes.time.pass(std::chrono::seconds(2));
        QCOMPARE(stage.state->ignoredDomainsText(), QString());
    }

    void copyingAndCuttingWriteTheSelection()
    {
        Stage stage({});
        stage.state->setIgnoredDomainsText(u"a.example\nb.example"_s);
        showEditor(stage);
        press(stage, QKeySequence::SelectAll);
        press(stage, QKeySequence::Copy);
        QCOMPARE(stage.fakes.pasteboard.contents(), std::optional<std::string>("a.example\nb.example"));
        QCOMPARE(stage.state->ignoredDomainsText(), u"a.example\nb.example"_s);

        press(stage, QKeySequence::Cut);
        QCOMPARE(stage.fakes.pasteboard.written.size(), std::size_t(2));
        QCOMPARE(stage.state->ignoredDomainsText(), QString());
        press(stage, QKeySequence::Copy); // Nothing is selected: the clipboard keeps what it has.
        QCOMPARE(stage.fakes.pasteboard.written.size(), std::size_t(2));
    }
};

static const RegisteredGuiTest<TextAreaClipboardTests> registered;
#include "TextAreaClipboardTests.moc"
