#include <VelmoraLinux/Appearance/DesktopAppearance.h>

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QGuiApplication>
#include <QPalette>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/SessionBus.h>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

using Groups = QMap<QString, QVariantMap>;

namespace {

const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceGroup = u"org.freedesktop.appearance"_s;

class FakeSettingsPortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    Groups groups;
    QList<QStringList> questions;

public Q_SLOTS:

    // NOLINTNEXTLINE(readability-identifier-naming): the bus's name
    Groups ReadAll(const QStringList &names)
    {
        questions.append(names);
        return groups;
    }
};

QPalette paletteWith(const QColor &text, const QColor &ground)
{
    QPalette palette;
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Window, ground);
    return palette;
}

} // namespace

class DesktopAppearanceTests : public QObject {
    Q_OBJECT

    std::optional<SessionBus> daemon_;
    std::optional<QDBusConnection> service_;
    std::unique_ptr<FakeSettingsPortal> portal_;
    std::unique_ptr<DesktopAppearance> appearance_;
    int changes_ = 0;

    void makeAppearance()
    {
        appearance_ =
            std::make_unique<DesktopAppearance>(QDBusConnection::connectToBus(daemon_->address(), u"ours"_s));
        appearance_->addChangeHandler([this] { ++changes_; });
    }

    void startPortal(const QVariantMap &settings)
    {
        portal_->groups = {{appearanceGroup, settings}};
        QVERIFY(service_->registerObject(portalPath, portal_.get(), QDBusConnection::ExportAllSlots));
        QVERIFY(service_->registerService(u"org.freedesktop.portal.Desktop"_s));
    }

    void change(const QString &group, const QString &key, const QVariant &value)
    {
        QDBusMessage signal = QDBusMessage::createSignal(portalPath, settingsInterface, u"SettingChanged"_s);
        signal.setArguments({group, key, QVariant::fromValue(QDBusVariant(value))});
        QVERIFY(service_->send(signal));
    }

private Q_SLOTS:

    void initTestCase()
    {
        qDBusRegisterMetaType<Groups>();
        qRegisterMetaType<Groups>("Groups");
        daemon_.emplace();
        QVERIFY(!daemon_->address().isEmpty());
    }

    void init()
    {
        changes_ = 0;
        service_ = QDBusConnection::connectToBus(daemon_->address(), u"portal"_s);
        portal_ = std::make_unique<FakeSettingsPortal>();
        QGuiApplication::setPalette(paletteWith(QColor(0x10, 0x10, 0x10), Qt::white));
    }

    void cleanup()
    {
        appearance_.reset();
        QDBusConnection::disconnectFromBus(u"ours"_s);
        service_.reset();
        QDBusConnection::disconnectFromBus(u"portal"_s);
        portal_.reset();
    }

    // The first one: what the others send and receive makes types known that a change needs.
    void changesAreFollowed()
    {
        startPortal({{u"color-scheme"_s, 2U}});
        makeAppearance();
        QTRY_COMPARE(changes_, 1);
        change(appearanceGroup, u"accent-color"_s, 3U);
        change(u"org.example"_s, u"color-scheme"_s, 1U);
        change(appearanceGroup, u"color-scheme"_s, 1U);
        QTRY_COMPARE(appearance_->colorScheme(), Appearance::ColorScheme::dark);
        QCOMPARE(changes_, 2);
        change(appearanceGroup, u"reduced-motion"_s, 1U);
        QTRY_VERIFY(appearance_->reducesMotion());
        QVERIFY(!appearance_->increasesContrast());
        change(appearanceGroup, u"contrast"_s, 1U);
        QTRY_VERIFY(appearance_->increasesContrast());
        change(appearanceGroup, u"contrast"_s, 0U);
        QTRY_VERIFY(!appearance_->increasesContrast());
        change(appearanceGroup, u"color-scheme"_s, 0U);
        QTRY_COMPARE(appearance_->colorScheme(), Appearance::ColorScheme::light);
        QCOMPARE(changes_, 6);
    }

    void thePortalDecides_data()
    {
        QTest::addColumn<QVariantMap>("settings");
        QTest::addColumn<bool>("isDark");
        QTest::addColumn<bool>("reducesMotion");
        QTest::newRow("dark") << QVariantMap{{u"color-scheme"_s, 1U}} << true << false;
        QTest::newRow("light") << QVariantMap{{u"color-scheme"_s, 2U}} << false << false;
        QTest::newRow("no preference: the palette") << QVariantMap{{u"color-scheme"_s, 0U}} << false << false;
        QTest::newRow("less motion") << QVariantMap{{u"reduced-motion"_s, 1U}} << false << true;
        QTest::newRow("both") << QVariantMap{{u"color-scheme"_s, 1U}, {u"reduced-motion"_s, 1U}} << true
                              << true;
    }

    void thePortalDecides()
    {
        QFETCH(QVariantMap, settings);
        QFETCH(bool, isDark);
        startPortal(settings);
        makeAppearance();
        QTRY_COMPARE(changes_, 1);
        QCOMPARE(portal_->questions, QList<QStringList>{{appearanceGroup}});
        QCOMPARE(appearance_->colorScheme() == Appearance::ColorScheme::dark, isDark);
        QTEST(appearance_->reducesMotion(), "reducesMotion");
    }

    void withoutAPortalThePaletteDecides()
    {
        makeAppearance();
        QCOMPARE(appearance_->colorScheme(), Appearance::ColorScheme::light);
        QVERIFY(!appearance_->reducesMotion());
        QVERIFY(!appearance_->increasesContrast());
        QGuiApplication::setPalette(paletteWith(Qt::white, Qt::black));
        QTRY_VERIFY(changes_ > 0);
        QCOMPARE(appearance_->colorScheme(), Appearance::ColorScheme::dark);
        QVERIFY(appearance_->increasesContrast());
        QGuiApplication::setPalette(paletteWith(QColor(0xee, 0xee, 0xee), QColor(0x22, 0x22, 0x22)));
        QVERIFY(!appearance_->increasesContrast());
    }
};

static const RegisteredGuiTest<DesktopAppearanceTests> registered;
#include "DesktopAppearanceTests.moc"
