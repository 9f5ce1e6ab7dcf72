#include <VelmoraLinux/Login/AutostartEntry.h>
#include <VelmoraLinux/Login/LoginItems.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString identifier = u"app.velmora.Velmora"_s;

QString valueOf(const QByteArray &entry, const QString &key)
{
    for (const QString &line : QString::fromUtf8(entry).split(u'\n')) {
        if (line.startsWith(key + u'='))
            return line.mid(key.size() + 1);
    }
    return {};
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class AutostartLoginItemTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        home_ = std::make_unique<QTemporaryDir>();
        QVERIFY(home_->isValid());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home_->filePath(u"config"_s)));
        entry_ = home_->filePath(u"config/autostart/app.velmora.Velmora.desktop"_s);
        environment_ = {};
    }

    void programsAreQuoted_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("exec");
        QTest::addColumn<QString>("tryExec");

        QTest::newRow("a plain path")
            << u"/usr/bin/velmora"_s << u"\"/usr/bin/velmora\""_s << u"/usr/bin/velmora"_s;
        QTest::newRow("blanks") << u"/home/a b/velmora"_s << u"\"/home/a b/velmora\""_s
                                << u"/home/a b/velmora"_s;
        QTest::newRow("a quote") << u"/a\"b"_s << u"\"/a\\\\\"b\""_s << u"/a\"b"_s;
        QTest::newRow("a dollar and a backquote") << u"/$a`b"_s << u"\"/\\\\$a\\\\`b\""_s << u"/$a`b"_s;
        QTest::newRow("a backslash") << u"/a\\b"_s << u"\"/a\\\\\\\\b\""_s << u"/a\\\\b"_s;
        QTest::newRow("a field code") << u"/50%f"_s << u"\"/50%%f\""_s << u"/50%f"_s;
        QTest::newRow("a line break") << u"/a\nExec"_s << u"\"/a\\nExec\""_s << u"/a\\nExec"_s;
        QTest::newRow("other scripts") << u"/home/jürgen/日本/velmora"_s << u"\"/home/jürgen/日本/velmora\""_s
                                       << u"/home/jürgen/日本/velmora"_s;
    }

    void programsAreQuoted()
    {
        QFETCH(QString, program);
        const QByteArray entry = autostartEntry(program, identifier).value_or(QByteArray());
        QTEST(valueOf(entry, u"Exec"_s), "exec");
        QTEST(valueOf(entry, u"TryExec"_s), "tryExec");
    }

    void pathsThatNoEntryCanCarryAreRefused()
    {
        QVERIFY(!autostartEntry(u"velmora"_s, identifier).has_value());
        QVERIFY(!autostartEntry(u"/opt/a=b/velmora"_s, identifier).has_value());
        QVERIFY(!autostartEntry(QString(), identifier).has_value());
        QVERIFY(!item(u"/opt/a=b/velmora"_s)->registerItem());
        QVERIFY(!QFile::exists(entry_));
    }

    void registeringWritesAnEntryThatDesktopsUnderstand()
    {
        QVERIFY(item(u"/usr/bin/velmora"_s)->registerItem());
        const QByteArray entry = contents(entry_);
        QVERIFY(entry.startsWith("[Desktop Entry]\nType=Application\n"));
        QCOMPARE(valueOf(entry, u"Exec"_s), u"\"/usr/bin/velmora\""_s);
        QCOMPARE(valueOf(entry, u"Icon"_s), identifier);
        QCOMPARE(valueOf(entry, u"Hidden"_s), u"false"_s);
        QCOMPARE(valueOf(entry, u"X-GNOME-Autostart-enabled"_s), u"true"_s);
    }

    void registeringTwiceIsNoError()
    {
        const auto login = item(u"/usr/bin/velmora"_s);
        QVERIFY(login->registerItem());
        QVERIFY(login->registerItem());
        QCOMPARE(QDir(QFileInfo(entry_).path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void registeringReplacesAnEntryThatWasSwitchedOff()
    {
        QVERIFY(QDir().mkpath(QFileInfo(entry_).path()));
        QFile file(entry_);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("[Desktop Entry]\nHidden=true\n") > 0);
        file.close();
        QVERIFY(item(u"/usr/bin/velmora"_s)->registerItem());
        QCOMPARE(valueOf(contents(entry_), u"Hidden"_s), u"false"_s);
    }

    void unregisteringRemovesTheEntry()
    {
        const auto login = item(u"/usr/bin/velmora"_s);
        QVERIFY(login->registerItem());
        QVERIFY(login->unregisterItem());
        QVERIFY(!QFile::exists(entry_));
    }

    void unregisteringWithoutAnEntryIsNoError()
    {
        QVERIFY(item(u"/usr/bin/velmora"_s)->unregisterItem());
        QVERIFY(!QFile::exists(QFileInfo(entry_).path())); // And leaves no folder.
    }

    void unregisteringRemovesADanglingLink()
    {
        QVERIFY(QDir().mkpath(QFileInfo(entry_).path()));
        QVERIFY(QFile::link(u"/nowhere/at/all"_s, entry_));
        QVERIFY(item(u"/usr/bin/velmora"_s)->unregisterItem());
        QVERIFY(!QFileInfo(entry_).isSymLink());
    }

    void aFolderThatCannotBeMadeIsAFailure()
    {
        QFile file(home_->filePath(u"config"_s)); // A file where the folder belongs.
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!item(u"/usr/bin/velmora"_s)->registerItem());
    }

    void anEntryThatCannotBeRemovedIsAFailure()
    {
        QVERIFY(QDir().mkpath(entry_ + u"/occupied"_s));
        QVERIFY(!item(u"/usr/bin/velmora"_s)->unregisterItem());
        QVERIFY(!item(u"/usr/bin/velmora"_s)->registerItem());
    }

    void theAppImageIsStartedRatherThanItsInside()
    {
        const QString image = file(u"Velmora.AppImage"_s);
        const QString inside = file(u"mount/usr/bin/velmora"_s);
        environment_.insert(u"APPIMAGE"_s, image);
        environment_.insert(u"APPDIR"_s, home_->filePath(u"mount"_s));
        QVERIFY(item(inside)->registerItem());
        QCOMPARE(valueOf(contents(entry_), u"TryExec"_s), image);
    }

    void theAppImageOfATerminalIsNotOurs()
    {
        environment_.insert(u"APPIMAGE"_s, file(u"Terminal.AppImage"_s));
        environment_.insert(u"APPDIR"_s, QFileInfo(file(u"terminal/AppRun"_s)).path());
        const QString program = file(u"bin/velmora"_s);
        QVERIFY(item(program)->registerItem());
        QCOMPARE(valueOf(contents(entry_), u"TryExec"_s), program);
    }

private:
    std::unique_ptr<LoginItem> item(const QString &program)
    {
        return makeLoginItem(identifier, program, environment_);
    }

    QString file(const QString &name)
    {
        QFile result(home_->filePath(name));
        if (!QDir().mkpath(QFileInfo(result).path()) || !result.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(name));
        return result.fileName();
    }

    std::unique_ptr<QTemporaryDir> home_;
    QString entry_;
    QProcessEnvironment environment_;
};

static const RegisteredTest<AutostartLoginItemTests> registered;
#include "AutostartLoginItemTests.moc"
