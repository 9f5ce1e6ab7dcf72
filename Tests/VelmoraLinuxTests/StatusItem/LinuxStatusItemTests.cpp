#include <VelmoraLinux/StatusItem/LinuxStatusItem.h>
#include <VelmoraLinux/X11/X11WorkAreas.h>

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/SessionBus.h>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString watcherName = u"org.kde.StatusNotifierWatcher"_s;

class LightAppearance final : public Appearance {
public:
    [[nodiscard]] ColorScheme colorScheme() const override { return ColorScheme::light; }

    [[nodiscard]] bool reducesMotion() const override { return false; }

    [[nodiscard]] bool increasesContrast() const override { return false; }

    void addChangeHandler(ChangeHandler) override {}
};

// A StatusNotifierWatcher with a host.
class FakeWatcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered MEMBER hasHost)

public:
    bool hasHost = true;
    QStringList items;

public Q_SLOTS:

    // NOLINTNEXTLINE(readability-identifier-naming): the bus's name
    void RegisterStatusNotifierItem(const QString &item) { items.append(item); }
};

QImage blackSquare()
{
    QImage image(34, 34, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    return image;
}

} // namespace

class LinuxStatusItemTests : public QObject {
    Q_OBJECT

    std::optional<SessionBus> daemon_;
    std::optional<QDBusConnection> panel_;
    std::unique_ptr<FakeWatcher> watcher_;
    LightAppearance appearance_;
    ActivationToken token_;
    std::unique_ptr<LinuxStatusItem> item_;
    QString service_;
    QString iconFolder_;
    X11WorkAreas screens_{nullptr};
    int newIcons_ = 0;
    int newToolTips_ = 0;

    void startWatcher()
    {
        watcher_ = std::make_unique<FakeWatcher>();
        panel_->registerObject(u"/StatusNotifierWatcher"_s, watcher_.get(),
                               QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
        QVERIFY(panel_->registerService(watcherName));
    }

    void stopWatcher()
    {
        QVERIFY(panel_->unregisterService(watcherName));
        panel_->unregisterObject(u"/StatusNotifierWatcher"_s);
    }

    void makeItem()
    {
        const auto ours = QDBusConnection::connectToBus(daemon_->address(), u"ours"_s);
        service_ = ours.baseService();
        item_ = std::make_unique<LinuxStatusItem>(
            LinuxStatusItem::Dependencies{ours, nullptr, screens_, appearance_, token_, iconFolder_},
            u"app.example"_s, u"Example"_s);
        item_->setTemplateImage(blackSquare(), QSize(17, 17));
    }

    void makeShownItem()
    {
        startWatcher();
        makeItem();
        QTRY_COMPARE(watcher_->items, QStringList(service_));
    }

    QDBusMessage ask(const QString &path, const QString &interface, const QString &method,
                     const QVariantList &arguments)
    {
        auto call = QDBusMessage::createMethodCall(service_, path, interface, method);
        call.setArguments(arguments);
        const QDBusPendingCall pending = panel_->asyncCall(call);
        return QTest::qWaitFor([&] { return pending.isFinished(); }) ? pending.reply() : QDBusMessage();
    }

    QDBusMessage askItem(const QString &method, const QVariantList &arguments)
    {
        return ask(StatusNotifierItem::path(), u"org.kde.StatusNotifierItem"_s, method, arguments);
    }

    QVariant property(const QString &name)
    {
        const auto answer = ask(StatusNotifierItem::path(), u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                                {u"org.kde.StatusNotifierItem"_s, name});
        return answer.arguments().value(0).value<QDBusVariant>().variant();
    }

    // Of the middle of the icon, 0 to 255.
    int alphaOnPanel()
    {
        const auto pixmaps =
            qdbus_cast<StatusNotifierPixmaps>(property(u"IconPixmap"_s).value<QDBusArgument>());
        const StatusNotifierPixmap &icon = pixmaps.constFirst();
        const qsizetype middle = qsizetype(icon.height) / 2 * icon.width + icon.width / 2;
        return static_cast<quint8>(icon.argb[4 * middle]);
    }

private Q_SLOTS:

    void initTestCase()
    {
        daemon_.emplace();
        QVERIFY(!daemon_->address().isEmpty());
    }

    void init()
    {
        panel_ = QDBusConnection::connectToBus(daemon_->address(), u"panel"_s);
        newIcons_ = 0;
        newToolTips_ = 0;
        iconFolder_.clear();
    }

    void cleanup()
    {
        item_.reset();
        QDBusConnection::disconnectFromBus(u"ours"_s);
        panel_.reset();
        QDBusConnection::disconnectFromBus(u"panel"_s);
        watcher_.reset();
    }

    void itOffersItselfAgainWhenTheWatcherComesLateOrReturns()
    {
        makeItem();
        startWatcher();
        QTRY_COMPARE(watcher_->items, QStringList(service_));
        stopWatcher();
        startWatcher();
        QTRY_COMPARE(watcher_->items, QStringList(service_));
    }

    void itSaysWhatItIs()
    {
        makeShownItem();
        QCOMPARE(property(u"Id"_s).toString(), u"app.example"_s);
        QCOMPARE(property(u"Title"_s).toString(), u"Example"_s);
        QCOMPARE(property(u"Category"_s).toString(), u"ApplicationStatus"_s);
        QCOMPARE(property(u"ItemIsMenu"_s).toBool(), false);
        QCOMPARE(property(u"Menu"_s).value<QDBusObjectPath>().path(), DBusMenu::path());
        QCOMPARE(property(u"Status"_s).toString(), u"Active"_s);
        item_->setVisible(false);
        QCOMPARE(property(u"Status"_s).toString(), u"Passive"_s);
        item_->setToolTip(u"Example \u00b7 Active"_s);
        const auto toolTip = qdbus_cast<StatusNotifierToolTip>(property(u"ToolTip"_s).value<QDBusArgument>());
        QCOMPARE(toolTip.title, u"Example \u00b7 Active"_s);
    }

    void hostsAreToldOfATooltipThatIsAnotherOne()
    {
        makeShownItem();
        QVERIFY(panel_->connect(service_, StatusNotifierItem::path(), u"org.kde.StatusNotifierItem"_s,
                                u"NewToolTip"_s, this, SLOT(hearNewToolTip())));
        for (const QString &text : {u"one"_s, u"one"_s, u"another"_s})
            item_->setToolTip(text);
        QTRY_COMPARE(newToolTips_, 2);
        item_->setToolTip(u"another"_s);
        QCOMPARE(property(u"Id"_s).toString(), u"app.example"_s); // Comes behind what was told before.
        QCOMPARE(newToolTips_, 2);
    }

    void theIconIsAsOpaqueAsWished_data()
    {
        QTest::addColumn<double>("opacity");
        QTest::newRow("full") << 1.0;
        QTest::newRow("dim") << 0.38;
    }

    void theIconIsAsOpaqueAsWished()
    {
        QFETCH(double, opacity);
        makeShownItem();
        item_->setOpacity(opacity);
        QCOMPARE(alphaOnPanel(), qRound(255 * opacity));
    }

    void whereTheDesktopColoursIconsItGetsTheirNames()
    {
        iconFolder_ = u"/somewhere/icons"_s;
        makeShownItem();
        QCOMPARE(property(u"IconThemePath"_s).toString(), iconFolder_);
        QCOMPARE(property(u"IconName"_s).toString(), u"app.example-symbolic"_s);
        item_->setOpacity(0.38);
        QCOMPARE(property(u"IconName"_s).toString(), u"app.example-38-symbolic"_s);
        QCOMPARE(alphaOnPanel(), qRound(255 * 0.38)); // For hosts that take pixmaps all the same.
    }

    void elsewhereThereAreOnlyPixmaps()
    {
        makeShownItem();
        QCOMPARE(property(u"IconName"_s).toString(), QString());
        QCOMPARE(property(u"IconThemePath"_s).toString(), QString());
    }

    void aFadeGoesInStepsToItsEnd()
    {
        makeShownItem();
        QVERIFY(panel_->connect(service_, StatusNotifierItem::path(), u"org.kde.StatusNotifierItem"_s,
                                u"NewIcon"_s, this, SLOT(hearNewIcon())));
        ask(StatusNotifierItem::path(), u"org.freedesktop.DBus.Peer"_s, u"Ping"_s, {});
        newIcons_ = 0;
        item_->fadeOpacity(0.45, 160ms);
        QTRY_COMPARE(alphaOnPanel(), qRound(255 * 0.45));
        QTRY_COMPARE(newIcons_, 4);

        item_->setOpacity(1);
        QCOMPARE(alphaOnPanel(), 255);
    }

    void settingTheOpacityEndsAFade()
    {
        makeShownItem();
        item_->fadeOpacity(0.1, 40ms);
        item_->setOpacity(1);
        QTest::qWait(100); // Nothing must happen, so there is nothing to wait for.
        QCOMPARE(alphaOnPanel(), 255);
    }

    void aClickCarriesItsPosition()
    {
        makeShownItem();
        QStringList events;
        item_->setEvents(
            {.activated = [&] { events += u"activated"_s; }, .menuRequested = [&] { events += u"menu"_s; }});
        QCOMPARE(item_->anchor(), std::nullopt);
        askItem(u"Activate"_s, {600, 300});
        QCOMPARE(events, QStringList(u"activated"_s));
        QCOMPARE(item_->anchor(), std::optional(QRect(600, 300, 1, 1)));
        QVERIFY(item_->contains(QPoint(610, 310)));
        QVERIFY(!item_->contains(QPoint(640, 310)));
        askItem(u"ContextMenu"_s, {700, 300});
        QCOMPARE(events, QStringList({u"activated"_s, u"menu"_s}));
        QCOMPARE(item_->anchor(), std::optional(QRect(700, 300, 1, 1)));
        for (const auto &[method, arguments] : {std::pair(u"SecondaryActivate"_s, QVariantList{1, 1}),
                                                std::pair(u"Scroll"_s, QVariantList{1, u"vertical"_s})})
            QCOMPARE(askItem(method, arguments).type(), QDBusMessage::ReplyMessage);
        QCOMPARE(events.size(), 2);
    }

    void aTokenOfTheDesktopIsKept()
    {
        makeShownItem();
        askItem(u"ProvideXdgActivationToken"_s, {u"token-1"_s});
        QCOMPARE(token_.take(), QByteArray("token-1"));
        QCOMPARE(token_.take(), QByteArray());
    }

    void askingForTheMenuCountsOnlyFromTheUser()
    {
        makeShownItem();
        int openings = 0;
        item_->setEvents({.menuAboutToShow = [&] { ++openings; }});
        const auto openMenu = [this] {
            ask(DBusMenu::path(), u"com.canonical.dbusmenu"_s, u"AboutToShow"_s, {0});
        };
        openMenu(); // Some hosts do so as soon as they know the item.
        QCOMPARE(openings, 0);
        askItem(u"Activate"_s, {600, 300});
        openMenu();
        QCOMPARE(openings, 1);
    }

public Q_SLOTS:

    void hearNewIcon() { ++newIcons_; }

    void hearNewToolTip() { ++newToolTips_; }
};

static const RegisteredGuiTest<LinuxStatusItemTests> registered;
#include "LinuxStatusItemTests.moc"
