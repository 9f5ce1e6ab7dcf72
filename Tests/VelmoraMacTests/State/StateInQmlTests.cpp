#include <VelmoraMac/AppState.h>

#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <Fakes/FakeServices.h>
#include <Runner/RegisteredTest.h>

#include <memory>

Q_IMPORT_QML_PLUGIN(VelmoraMacPlugin)

using namespace Qt::StringLiterals;

// What views may do with the state: read it, follow it, assign to it, call its actions.
class StateInQmlTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        probe.reset();
        state.reset();
        fakes = std::make_unique<FakeServices>();
        state = std::make_unique<AppState>(fakes->dependencies());
        engine = std::make_unique<QQmlEngine>();
        engine->addImportPath(u"qrc:/qt/qml"_s);
    }

    void bindingsFollowTheStateAndTheLanguage()
    {
        load(
            "readonly property string text: LocalizedStrings.choose('Paused', 'Pausiert', appState.language)"
            " + ' ' + !appState.autoCleanEnabled + ' ' + LocalizedStrings.removedCount(appState.totalCleaned,"
            " appState.language)");
        QCOMPARE(text(), u"Paused false 0 removed"_s);
        state->setAutoCleanEnabled(false);
        state->setLanguage(AppLanguage::german);
        state->record({u"https://a.example/?si=1"_s, u"https://a.example/"_s, {u"si"_s}});
        QCOMPARE(text(), u"Pausiert true 1 entfernt"_s);
    }

    void enumerationsAreScopedAndAssignmentsRunTheSetters()
    {
        load("readonly property bool isGraphite: appState.appTheme === Velmora.VelmoraTheme.graphite\n"
             "function act() {\n"
             "    appState.language = Velmora.AppLanguage.german\n"
             "    appState.activeAppTab = Velmora.AppTab.history\n"
             "    appState.appTheme = Velmora.VelmoraTheme.ocean\n"
             "    appState.askBeforeCleaningEnabled = true\n"
             "}");
        QVERIFY(probe->property("isGraphite").toBool());
        act();
        QVERIFY(!probe->property("isGraphite").toBool());
        QCOMPARE(state->language(), AppLanguage::german);
        QCOMPARE(state->activeAppTab(), AppTab::history);
        QCOMPARE(fakes->defaults.string(u"appTheme"), u"ocean"_s);
        QCOMPARE(fakes->defaults.boolean(u"askBeforeCleaningEnabled"), true);
        QCOMPARE(fakes->telemetry.names(), QStringList({u"language_changed"_s, u"theme_changed"_s}));
    }

    void theLastResultIsThereOnceThereIsOne()
    {
        load("readonly property string text: appState.hasLastResult ? appState.lastResult.cleanedText + ' '"
             " + appState.lastResult.removedCount + ' ' + appState.lastResult.didChange : 'none'");
        QCOMPARE(text(), u"none"_s);
        state->record({u"https://a.example/?si=1&gclid=2"_s, u"https://a.example/"_s, {u"si"_s, u"gclid"_s}});
        QCOMPARE(text(), u"https://a.example/ 2 true"_s);
    }

    void historyEntriesAreReadAndGivenBackToTheActions()
    {
        load("readonly property string text: appState.historyEntries.map(entry => entry.cleanedText + ' ' + "
             "entry.removedCount + ' ' + entry.removedParameterNames.join(', ') + ' ' + "
             "entry.cleanedAt.toISOString()).join('; ')\n"
             "function act() {\n"
             "    appState.copyCleanedLink(appState.historyEntries[1])\n"
             "    appState.restoreOriginalLink(appState.historyEntries[0])\n"
             "    appState.addIgnoredHostFromLastResult()\n"
             "    appState.clearHistory()\n"
             "}");
        state->record({u"https://a.example/?si=1"_s, u"https://a.example/"_s, {u"si"_s}});
        state->record({u"https://b.example/?si=1&gclid"_s, u"https://b.example/"_s, {u"si"_s, u"gclid"_s}});
        QCOMPARE(text(), u"https://b.example/ 2 si, gclid 2026-03-07T10:11:12.000Z; "
                         u"https://a.example/ 1 si 2026-03-07T10:11:12.000Z"_s);
        act();
        QCOMPARE(fakes->pasteboard.written,
                 std::vector<std::string>({"https://a.example/", "https://b.example/?si=1&gclid"}));
        QCOMPARE(state->ignoredDomainsText(), u"b.example"_s);
        QCOMPARE(text(), QString());
    }

private:
    // Makes an object that holds the state and `members`.
    void load(const QByteArray &members)
    {
        QQmlComponent component(engine.get());
        component.setData(
            "import QtQml\nimport VelmoraMac\nQtObject {\nrequired property AppState appState\n" + members +
                "\n}",
            QUrl(u"qrc:/Probe.qml"_s));
        probe.reset(
            component.createWithInitialProperties({{u"appState"_s, QVariant::fromValue(state.get())}}));
        QVERIFY2(probe, qPrintable(component.errorString()));
    }

    [[nodiscard]] QString text() const { return probe->property("text").toString(); }

    void act() { QVERIFY(QMetaObject::invokeMethod(probe.get(), "act")); }

    std::unique_ptr<FakeServices> fakes;
    std::unique_ptr<AppState> state;
    std::unique_ptr<QQmlEngine> engine;
    std::unique_ptr<QObject> probe;
};

static const RegisteredTest<StateInQmlTests> registered;
#include "StateInQmlTests.moc"
