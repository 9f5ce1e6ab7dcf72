#include <VelmoraLinux/StatusItem/DBusMenu.h>

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QSignalSpy>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/SessionBus.h>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

const QString ofMenus = u"com.canonical.dbusmenu"_s;

template<typename T>
T valueOf(const QVariant &argument)
{
    return qdbus_cast<T>(argument.value<QDBusArgument>());
}

} // namespace

class DBusMenuTests : public QObject {
    Q_OBJECT

    std::optional<SessionBus> daemon_;
    std::unique_ptr<DBusMenu> menu_;
    std::optional<QDBusConnection> host_; // As a panel has one.
    QString service_;
    QStringList ran_;

    QDBusMessage ask(const QString &method, const QVariantList &arguments, const QString &interface = ofMenus)
    {
        auto call = QDBusMessage::createMethodCall(service_, DBusMenu::path(), interface, method);
        call.setArguments(arguments);
        const QDBusPendingCall pending = host_->asyncCall(call);
        return QTest::qWaitFor([&] { return pending.isFinished(); }) ? pending.reply() : QDBusMessage();
    }

    StatusMenuEntry entry(const QString &title, StatusMenuEntry::Check check = StatusMenuEntry::Check::none)
    {
        return {title, check, [this, title] { ran_.append(title); }};
    }

private Q_SLOTS:

    void initTestCase()
    {
        daemon_.emplace();
        QVERIFY(!daemon_->address().isEmpty());
    }

    void init()
    {
        const auto ours = QDBusConnection::connectToBus(daemon_->address(), u"ours"_s);
        host_ = QDBusConnection::connectToBus(daemon_->address(), u"host"_s);
        service_ = ours.baseService();
        menu_ = std::make_unique<DBusMenu>(ours);
        QVERIFY(menu_->exportMenu());
        ran_.clear();
        menu_->setMenu({entry(u"Pause_it"_s),
                        entry(u"Start"_s, StatusMenuEntry::Check::on),
                        entry(u"Other"_s, StatusMenuEntry::Check::off),
                        {},
                        entry(u"Quit"_s)});
    }

    void cleanup()
    {
        menu_.reset();
        host_.reset();
        QDBusConnection::disconnectFromBus(u"ours"_s);
        QDBusConnection::disconnectFromBus(u"host"_s);
    }

    void theLayoutListsTheEntriesInOrder()
    {
        const auto answer = ask(u"GetLayout"_s, {0, -1, QStringList()}).arguments();
        QCOMPARE(answer.size(), 2);
        const auto layout = valueOf<DBusMenuLayout>(answer[1]);
        QCOMPARE(layout.properties, QVariantMap({{u"children-display"_s, u"submenu"_s}}));
        QList<QVariantMap> entries;
        for (const DBusMenuLayout &child : layout.children) {
            QCOMPARE(child.id, entries.size() + 1);
            entries.append(child.properties);
        }
        const auto checked = [](const QString &label, int state) {
            return QVariantMap{
                {u"label"_s, label}, {u"toggle-type"_s, u"checkmark"_s}, {u"toggle-state"_s, state}};
        };
        QCOMPARE(entries, QList<QVariantMap>({{{u"label"_s, u"Pause__it"_s}},
                                              checked(u"Start"_s, 1),
                                              checked(u"Other"_s, 0),
                                              {{u"type"_s, u"separator"_s}},
                                              {{u"label"_s, u"Quit"_s}}}));
    }

    void theLayoutIsAsDeepAndWideAsAskedFor_data()
    {
        QTest::addColumn<int>("parent");
        QTest::addColumn<int>("depth");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<int>("children");
        QTest::addColumn<QVariantMap>("properties");
        const QVariantMap menu{{u"children-display"_s, u"submenu"_s}};
        QTest::newRow("everything") << 0 << -1 << QStringList() << 5 << menu;
        QTest::newRow("one level") << 0 << 1 << QStringList() << 5 << menu;
        QTest::newRow("the menu alone") << 0 << 0 << QStringList() << 0 << menu;
        QTest::newRow("labels only") << 0 << -1 << QStringList(u"label"_s) << 5 << QVariantMap();
        QTest::newRow("an entry") << 2 << -1 << QStringList(u"toggle-state"_s) << 0
                                  << QVariantMap{{u"toggle-state"_s, 1}};
    }

    void theLayoutIsAsDeepAndWideAsAskedFor()
    {
        QFETCH(int, parent);
        QFETCH(int, depth);
        QFETCH(QStringList, names);
        const auto answer = ask(u"GetLayout"_s, {parent, depth, names}).arguments();
        QCOMPARE(answer.size(), 2);
        const auto layout = valueOf<DBusMenuLayout>(answer[1]);
        QCOMPARE(layout.id, parent);
        QTEST(static_cast<int>(layout.children.size()), "children");
        QTEST(layout.properties, "properties");
    }

    void whatDoesNotExistIsRefused_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QVariantList>("arguments");
        QTest::newRow("layout") << u"GetLayout"_s << QVariantList{6, -1, QStringList()};
        QTest::newRow("layout of a negative id") << u"GetLayout"_s << QVariantList{-1, -1, QStringList()};
        QTest::newRow("property of no entry") << u"GetProperty"_s << QVariantList{6, u"label"_s};
        QTest::newRow("no property") << u"GetProperty"_s << QVariantList{1, u"toggle-state"_s};
    }

    void whatDoesNotExistIsRefused()
    {
        QFETCH(QString, method);
        QFETCH(QVariantList, arguments);
        QCOMPARE(ask(method, arguments).errorName(), u"org.freedesktop.DBus.Error.InvalidArgs"_s);
    }

    void propertiesCanBeHadForSeveralEntriesAtOnce()
    {
        const QVariant some = QVariant::fromValue(QList<int>{5, 6, 1});
        auto answer = ask(u"GetGroupProperties"_s, {some, QStringList(u"label"_s)}).arguments();
        auto items = valueOf<DBusMenuItems>(answer.value(0));
        QCOMPARE(items.size(), 2);
        QCOMPARE(items[0].id, 5);
        QCOMPARE(items[0].properties.value(u"label"_s), u"Quit"_s);
        QCOMPARE(items[1].id, 1);

        const QVariant all = QVariant::fromValue(QList<int>());
        answer = ask(u"GetGroupProperties"_s, {all, QStringList()}).arguments();
        QCOMPARE(valueOf<DBusMenuItems>(answer.value(0)).size(), 6);
        answer = ask(u"GetProperty"_s, {5, u"label"_s}).arguments();
        QCOMPARE(answer.value(0).value<QDBusVariant>().variant().toString(), u"Quit"_s);
    }

    void clicksRunEntries()
    {
        const QVariant nothing = QVariant::fromValue(QDBusVariant(0));
        ask(u"Event"_s, {5, u"clicked"_s, nothing, 0U});
        QTRY_COMPARE(ran_, QStringList(u"Quit"_s));
        for (const int id : {-1, 0, 4, 6}) // Outside, the menu itself, a separator.
            ask(u"Event"_s, {id, u"clicked"_s, nothing, 0U});
        ask(u"Event"_s, {1, u"hovered"_s, nothing, 0U});
        ask(u"Event"_s, {1, u"clicked"_s, nothing, 0U});
        QTRY_COMPARE(ran_, QStringList({u"Quit"_s, u"Pause_it"_s}));
    }

    void severalEventsComeAtOnceAndUnknownEntriesAreNamed()
    {
        const DBusMenuEvents events{{1, u"clicked"_s, QDBusVariant(0), 0},
                                    {9, u"clicked"_s, QDBusVariant(0), 0},
                                    {5, u"clicked"_s, QDBusVariant(0), 0}};
        const auto answer = ask(u"EventGroup"_s, {QVariant::fromValue(events)}).arguments();
        QCOMPARE(valueOf<QList<int>>(answer.value(0)), QList<int>{9});
        QTRY_COMPARE(ran_, QStringList({u"Pause_it"_s, u"Quit"_s}));
    }

    void aHostThatOpensTheMenuIsNoticed_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QVariantList>("arguments");
        QTest::addColumn<int>("openings");
        const QVariant nothing = QVariant::fromValue(QDBusVariant(0));
        const QVariant ids = QVariant::fromValue(QList<int>{0, 7});
        QTest::newRow("about to show") << u"AboutToShow"_s << QVariantList{0} << 1;
        QTest::newRow("about to show an entry") << u"AboutToShow"_s << QVariantList{1} << 0;
        QTest::newRow("about to show several") << u"AboutToShowGroup"_s << QVariantList{ids} << 1;
        QTest::newRow("opened") << u"Event"_s << QVariantList{0, u"opened"_s, nothing, 0U} << 1;
        QTest::newRow("closed") << u"Event"_s << QVariantList{0, u"closed"_s, nothing, 0U} << 0;
    }

    void aHostThatOpensTheMenuIsNoticed()
    {
        QFETCH(QString, method);
        QFETCH(QVariantList, arguments);
        const QSignalSpy openings(menu_.get(), &DBusMenu::opening);
        QCOMPARE(ask(method, arguments).type(), QDBusMessage::ReplyMessage);
        QTEST(static_cast<int>(openings.size()), "openings");
    }

    void aNewMenuIsAnnouncedUnderANewNumber()
    {
        const uint before = ask(u"GetLayout"_s, {0, 0, QStringList()}).arguments().value(0).toUInt();
        host_->connect(service_, DBusMenu::path(), ofMenus, u"LayoutUpdated"_s, this, SLOT(hear(uint, int)));
        ask(u"Ping"_s, {}, u"org.freedesktop.DBus.Peer"_s); // The bus knows now that we listen.
        menu_->setMenu({entry(u"Only"_s)});
        QTRY_COMPARE(heard_, QList<uint>{before + 1});
        const auto answer = ask(u"GetLayout"_s, {0, -1, QStringList()}).arguments();
        QCOMPARE(answer.value(0).toUInt(), before + 1);
        QCOMPARE(valueOf<DBusMenuLayout>(answer.value(1)).children.size(), 1);
    }

public Q_SLOTS:

    void hear(uint revision, int parent)
    {
        QCOMPARE(parent, 0);
        heard_.append(revision);
    }

private:
    QList<uint> heard_;
};

static const RegisteredTest<DBusMenuTests> registered;
#include "DBusMenuTests.moc"
