#include <VelmoraLinux/Updates/UpdateChoice.h>

#include <QTest>

#include <Fakes/UtcTime.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

const QDateTime released = utcTime({2026, 11, 20}, {12, 0});

UpdateHost host()
{
    return {.version = u"10"_s,
            .systemVersion = u"2.36"_s,
            .system = u"linux"_s,
            .architecture = u"x86_64"_s,
            .archiveTypes = {u"application/x-xz"_s, u"application/gzip"_s},
            .skippedVersion = {},
            .rolloutGroup = 0,
            .now = released};
}

AppcastItem item(const QString &version)
{
    AppcastItem result;
    result.version = version;
    result.shownVersion = version;
    result.published = released;
    result.enclosures = {{.url = QUrl(u"https://e.example/v.tar.gz"_s),
                          .length = 7,
                          .type = u"application/gzip"_s,
                          .signature = u"c2ln"_s,
                          .system = {},
                          .architecture = {}}};
    return result;
}

using Change = std::function<void(AppcastItem &, UpdateHost &)>;

} // namespace

Q_DECLARE_METATYPE(Change)

class UpdateChoiceTests : public QObject {
    Q_OBJECT

    static void row(const char *name, bool toUser, bool bySchedule, const Change &change)
    {
        QTest::newRow(name) << change << toUser << bySchedule;
    }

    static void addSkippedAndStaggered()
    {
        row("skipped", true, false, [](AppcastItem &, UpdateHost &h) { h.skippedVersion = u"11"_s; });
        row("newer than the skipped one", true, true,
            [](AppcastItem &, UpdateHost &h) { h.skippedVersion = u"10.5"_s; });
        row("skipped long ago", true, true, [](AppcastItem &i, UpdateHost &h) {
            h.skippedVersion = u"11"_s;
            i.ignoreSkippedBelow = u"11.1"_s;
        });
        row("skipped, but critical", true, true, [](AppcastItem &i, UpdateHost &h) {
            h.skippedVersion = u"11"_s;
            i.critical = true;
        });
        row("the turn of this group has come", true, true, [](AppcastItem &i, UpdateHost &h) {
            i.phasedInterval = 3600;
            h.rolloutGroup = 2;
            h.now = released.addSecs(7200);
        });
        row("the turn of this group comes later", true, false, [](AppcastItem &i, UpdateHost &h) {
            i.phasedInterval = 3600;
            h.rolloutGroup = 2;
            h.now = released.addSecs(7199);
        });
        row("critical ones wait for no turn", true, true, [](AppcastItem &i, UpdateHost &h) {
            i.phasedInterval = 3600;
            i.critical = true;
            h.rolloutGroup = 6;
        });
        row("news without an archive", true, true, [](AppcastItem &i, UpdateHost &) {
            i.informational = true;
            i.enclosures.clear();
        });
        row("news for older versions only", false, false, [](AppcastItem &i, UpdateHost &) {
            i.informational = true;
            i.informationalBelow = u"9"_s;
            i.enclosures.clear();
        });
    }

private Q_SLOTS:

    void theNewestIsChosen()
    {
        const UpdateChoice choice = chooseUpdate(
            {item(u"9"_s), item(u"11"_s), item(u"12"_s), item(u"11.5"_s)}, host(), CheckKind::byUser);
        QVERIFY(choice.item.has_value());
        QCOMPARE(choice.item->version, u"12"_s);
    }

    void theFirstAmongEqualsIsChosen()
    {
        AppcastItem first = item(u"11"_s);
        AppcastItem second = item(u"11.0"_s);
        const UpdateChoice choice = chooseUpdate({first, second}, host(), CheckKind::byUser);
        QCOMPARE(choice.item.value_or(AppcastItem()).version, u"11"_s);
    }

    void eachKindThatCanBeUnpackedFits()
    {
        AppcastItem next = item(u"11"_s);
        next.enclosures.first().type = u"application/x-xz"_s;
        QVERIFY(chooseUpdate({next}, host(), CheckKind::byUser).item.has_value());
        next.enclosures.first().type = u"application/zstd"_s;
        QVERIFY(!chooseUpdate({next}, host(), CheckKind::byUser).item.has_value());
    }

    void theEnclosureThatFitsIsTaken()
    {
        AppcastItem both = item(u"11"_s);
        AppcastEnclosure image = both.enclosures.first();
        image.type = u"application/vnd.appimage"_s;
        both.enclosures.prepend(image);
        const UpdateChoice choice = chooseUpdate({both}, host(), CheckKind::byUser);
        QVERIFY(choice.item.has_value());
        QCOMPARE(choice.item->enclosures, item(u"11"_s).enclosures);
    }

    void anItemIsOfferedOrNot_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<bool>("offeredToUser");
        QTest::addColumn<bool>("offeredBySchedule");

        row("newer", true, true, [](AppcastItem &, UpdateHost &) {});
        row("the same version", false, false, [](AppcastItem &i, UpdateHost &) { i.version = u"10.0"_s; });
        row("an older version", false, false, [](AppcastItem &i, UpdateHost &) { i.version = u"9.9"_s; });
        row("another system", false, false,
            [](AppcastItem &i, UpdateHost &) { i.enclosures[0].system = u"macos"_s; });
        row("this system", true, true,
            [](AppcastItem &i, UpdateHost &) { i.enclosures[0].system = u"linux"_s; });
        row("another processor", false, false,
            [](AppcastItem &i, UpdateHost &) { i.enclosures[0].architecture = u"aarch64"_s; });
        row("another kind of archive", false, false,
            [](AppcastItem &i, UpdateHost &) { i.enclosures[0].type = u"application/zip"_s; });
        row("no length", false, false, [](AppcastItem &i, UpdateHost &) { i.enclosures[0].length = 0; });
        row("a channel for testers", false, false,
            [](AppcastItem &i, UpdateHost &) { i.channel = u"beta"_s; });
        row("a system too old", false, false,
            [](AppcastItem &i, UpdateHost &) { i.minimumSystem = u"2.37"_s; });
        row("a system too new", false, false,
            [](AppcastItem &i, UpdateHost &) { i.maximumSystem = u"2.35"_s; });
        addSkippedAndStaggered();
    }

    void anItemIsOfferedOrNot()
    {
        QFETCH(Change, change);
        AppcastItem offered = item(u"11"_s);
        UpdateHost where = host();
        change(offered, where);
        QTEST(chooseUpdate({offered}, where, CheckKind::byUser).item.has_value(), "offeredToUser");
        QTEST(chooseUpdate({offered}, where, CheckKind::scheduled).item.has_value(), "offeredBySchedule");
    }

    void aNewerVersionForAnotherSystemIsMentioned()
    {
        AppcastItem later = item(u"11"_s);
        later.minimumSystem = u"3"_s;
        QVERIFY(chooseUpdate({later}, host(), CheckKind::byUser).otherSystemOnly);
        QVERIFY(!chooseUpdate({later, item(u"10.5"_s)}, host(), CheckKind::byUser).otherSystemOnly);
        QVERIFY(!chooseUpdate({item(u"9"_s)}, host(), CheckKind::byUser).otherSystemOnly);
    }

    void criticalHoldsBelowItsVersion()
    {
        AppcastItem urgent = item(u"11"_s);
        urgent.critical = true;
        QVERIFY(chooseUpdate({urgent}, host(), CheckKind::byUser).critical);
        urgent.criticalBelow = u"10"_s;
        QVERIFY(!chooseUpdate({urgent}, host(), CheckKind::byUser).critical);
        urgent.criticalBelow = u"10.1"_s;
        QVERIFY(chooseUpdate({urgent}, host(), CheckKind::byUser).critical);
    }

    void anInformationalUpdateAppliesToTheVersionsItNames()
    {
        AppcastItem news = item(u"11"_s);
        news.informational = true;
        QVERIFY(chooseUpdate({news}, host(), CheckKind::byUser).informational);
        news.informationalFor = {u"9"_s};
        QVERIFY(!chooseUpdate({news}, host(), CheckKind::byUser).informational);
        news.informationalFor = {u"9"_s, u"10"_s};
        QVERIFY(chooseUpdate({news}, host(), CheckKind::byUser).informational);
    }
};

static const RegisteredTest<UpdateChoiceTests> registered;
#include "UpdateChoiceTests.moc"
