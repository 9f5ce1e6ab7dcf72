#include <QQuickTextDocument>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <Rehearsal/ItemTree.h>
#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class HistoryEntryViewsTests : public QObject {
    Q_OBJECT

    static void press(Stage &stage, const QString &name)
    {
        QQuickItem *control = ItemTree::control(*stage.window()->rootObject(), name);
        QVERIFY2(control != nullptr, qPrintable(name));
        QTest::mouseClick(stage.window(), Qt::LeftButton, {}, ItemTree::middle(*control));
    }

    static QQuickItem *showRow(Stage &stage, const CleanHistoryEntry &entry)
    {
        return stage.show(u"History/HistoryEntryRow"_s, {{u"entry"_s, QVariant::fromValue(entry)}},
                          {590, 210});
    }

    // Of the text view in `item` that shows `text`.
    static QTextDocument *documentOf(const QQuickItem &item, const QString &text)
    {
        for (const QQuickItem *child : item.findChildren<QQuickItem *>()) {
            auto *document = child->property("textDocument").value<QQuickTextDocument *>();
            if (document != nullptr && child->property("text") == text)
                return document->textDocument();
        }
        return nullptr;
    }

    static CleanHistoryEntry sameEntry()
    {
        CleanHistoryEntry entry;
        entry.originalText = entry.cleanedText = u"https://a.example/"_s;
        return entry;
    }

private Q_SLOTS:

    void initTestCase()
    {
        prepareFont(u"Inter"_s);
        QAccessible::setActive(true);
    }

    void aRowTellsItsEntry()
    {
        Stage stage({});
        CleanHistoryEntry entry;
        entry.originalText = u"https://a.example/?utm_source=x&gclid=1"_s;
        entry.cleanedText = u"https://a.example/"_s;
        entry.removedCount = 2;
        entry.removedParameterNames = {u"utm_source"_s, u"gclid"_s};
        entry.setCleanedAt(QDateTime(QDate(2026, 3, 7), QTime(14, 5)));
        QQuickItem *row = showRow(stage, entry);
        QVERIFY2(row != nullptr, qPrintable(stage.warnings.join(u'\n')));

        QCOMPARE(ItemTree::texts(*row),
                 QStringList({u"2 removed"_s, u"Mar 7, 2026, 2:05 PM"_s, u"Before"_s, entry.originalText,
                              u"After"_s, entry.cleanedText, u"utm_source, gclid"_s, u"Copy Clean Link"_s,
                              u"Restore Original"_s, u"Details"_s}));
        stage.state->setLanguage(AppLanguage::german);
        QCOMPARE(ItemTree::texts(*row),
                 QStringList({u"2 entfernt"_s, u"07.03.2026, 14:05"_s, u"Vorher"_s, entry.originalText,
                              u"Nachher"_s, entry.cleanedText, u"utm_source, gclid"_s,
                              u"Clean-Link kopieren"_s, u"Original"_s, u"Details"_s}));
    }

    void anEntryThatChangedNothingStillShowsBothLines()
    {
        Stage stage({});
        const QStringList texts = ItemTree::texts(*showRow(stage, sameEntry()));

        QCOMPARE(texts.count(u"https://a.example/"_s), 2);
        QVERIFY(texts.contains(u"Copy Clean Link"_s) && texts.contains(u"Restore Original"_s));
    }

    void whatIsNotKeptWholeSaysSoAndIsNotOffered()
    {
        Stage stage({});
        CleanHistoryEntry entry = sameEntry();
        entry.originalBytes = 20'000'000;
        entry.removedCount = 7;
        entry.removedParameterNames = {u"utm_source"_s};
        QQuickItem *row = showRow(stage, entry);
        const QStringList texts = ItemTree::texts(*row);
        QVERIFY(texts.contains(u"Before (beginning of 20.0 MB)"_s) && texts.contains(u"After"_s));
        QVERIFY(texts.contains(u"utm_source, \u2026"_s));
        for (const QQuickItem *button : row->findChildren<QQuickItem *>()) {
            if (button->property("text") == u"Restore Original"_s && button->inherits("QQuickAbstractButton"))
                QVERIFY(!button->isEnabled());
            if (button->property("text") == u"Copy Clean Link"_s && button->inherits("QQuickAbstractButton"))
                QVERIFY(button->isEnabled());
        }
        const QStringList details = ItemTree::texts(*stage.showDetails(entry));
        QVERIFY(details.contains(u"Before (beginning of 20.0 MB)"_s) && details.contains(u"After"_s));
    }

    void anEntryWithoutNamesKeepsTheirLine()
    {
        Stage with({});
        CleanHistoryEntry named = sameEntry();
        named.removedParameterNames = {u"utm_source"_s};
        const double height = showRow(with, named)->implicitHeight();
        Stage without({});

        QCOMPARE(showRow(without, sameEntry())->implicitHeight(), height);
    }

    void aLongLinkIsCutInTheRowAndWholeInTheDetails()
    {
        Stage stage({});
        const CleanHistoryEntry entry = longEntry();
        QCOMPARE(entry.originalText.size() >= 4000, true);
        QQuickItem *row = showRow(stage, entry);
        for (const QQuickItem *text : row->findChildren<QQuickItem *>())
            if (text->inherits("QQuickText") && text->property("text").toString().startsWith(u"https:"))
                QVERIFY(text->property("text").toString().contains(u'\u2026'));

        const QStringList details = ItemTree::texts(*stage.showDetails(entry));
        QVERIFY(details.contains(entry.originalText) && details.contains(entry.cleanedText));
    }

    // Each line is highlighted on its own, and the whole text must not be compared again for each.
    void whatWasRemovedIsTintedInTheLastOfManyLines()
    {
        Stage stage({});
        CleanHistoryEntry entry;
        entry.cleanedText = u"a\n"_s.repeated(45'000) + u"https://a.example/"_s;
        entry.originalText = entry.cleanedText + u"?gclid=1"_s;
        const QTextBlock line = documentOf(*stage.showDetails(entry), entry.originalText)->lastBlock();
        const QList<QTextLayout::FormatRange> tinted = line.layout()->formats();

        QCOMPARE(line.text(), u"https://a.example/?gclid=1"_s);
        QCOMPARE(tinted.size(), 1);
        QCOMPARE(tinted.first().start, 18);
        QCOMPARE(tinted.first().length, 8);
    }

    void theButtonsWriteToTheClipboard()
    {
        Stage stage({});
        showRow(stage, longEntry());

        press(stage, u"Copy Clean Link"_s);
        press(stage, u"Restore Original"_s);

        QCOMPARE(stage.fakes.pasteboard.written,
                 (std::vector<std::string>{longEntry().cleanedText.toStdString(),
                                           longEntry().originalText.toStdString()}));
    }

    void detailsOpenInASheetThatCloses()
    {
        Stage stage({});
        QQuickItem *row = showRow(stage, longEntry());
        QVERIFY(!row->property("showingDetails").toBool());

        press(stage, u"Details"_s);
        QVERIFY(row->property("showingDetails").toBool());
        QQuickWindow *sheet = nullptr;
        for (QWindow *window : QGuiApplication::allWindows())
            if (window != stage.window() && window->isVisible())
                sheet = qobject_cast<QQuickWindow *>(window);
        QVERIFY(sheet != nullptr);
        QCOMPARE(sheet->size(), QSize(720, 560));
        QCOMPARE(sheet->transientParent(), stage.window());

        QQuickItem *close = ItemTree::control(*sheet->contentItem(), u"Close"_s);
        QTest::mouseClick(sheet, Qt::LeftButton, {}, ItemTree::middle(*close));
        QVERIFY(!row->property("showingDetails").toBool());
    }

    void theDetailsInBothLanguages()
    {
        Stage stage({});
        QQuickItem *details = stage.showDetails(sameEntry());
        QVERIFY2(details != nullptr, qPrintable(stage.warnings.join(u'\n')));
        const QString link = sameEntry().originalText;
        QCOMPARE(ItemTree::texts(*details),
                 QStringList({u"Full Link Details"_s, u"Close"_s, u"Before"_s, link, u"After"_s, link,
                              u"Copy Clean Link"_s, u"Restore Original"_s}));

        stage.state->setLanguage(AppLanguage::german);

        QCOMPARE(ItemTree::texts(*details),
                 QStringList({u"Link-Details"_s, u"Schließen"_s, u"Vorher"_s, link, u"Nachher"_s, link,
                              u"Clean-Link kopieren"_s, u"Original"_s}));
        for (const auto &control : ItemTree::controls(*stage.window()))
            QVERIFY(!control.name.isEmpty());
    }

    void escapeDismissesTheDetails()
    {
        Stage stage({});
        QQuickItem *details = stage.showDetails(sameEntry());
        details->forceActiveFocus();
        QSignalSpy dismissed(details, SIGNAL(dismissed()));

        QTest::keyClick(stage.window(), Qt::Key_Escape);

        QCOMPARE(dismissed.size(), 1);
    }
};

static const RegisteredGuiTest<HistoryEntryViewsTests> registered;
#include "HistoryEntryViewsTests.moc"
