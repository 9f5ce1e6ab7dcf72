#include <VelmoraLinux/Process/PluginFolders.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class PluginFoldersTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void withoutAConfigurationTheyAreWhereQtIsInstalled()
    {
        const QTemporaryDir copy;
        QCOMPARE(pluginFolders(copy.path()), QCoreApplication::libraryPaths());
        QVERIFY(!QCoreApplication::libraryPaths().isEmpty());
    }

    void aCopyWithItsOwnPluginsSaysWhereTheyAre_data()
    {
        QTest::addColumn<QByteArray>("configuration");
        QTest::addColumn<QString>("folder"); // In that of the copy, unless absolute.
        QTest::newRow("as the packages have it")
            << QByteArray("[Paths]\nPrefix=..\nPlugins=plugins\nQmlImports=qml\n") << u"plugins"_s;
        QTest::newRow("beside the program") << QByteArray("[Paths]\nPlugins=own\n") << u"bin/own"_s;
        QTest::newRow("in the usual place") << QByteArray("[Paths]\nPrefix=../lib\n") << u"lib/plugins"_s;
        QTest::newRow("anywhere") << QByteArray("[Paths]\nPrefix=..\nPlugins=/opt/plugins\n")
                                  << u"/opt/plugins"_s;
        QTest::newRow("an empty file") << QByteArray() << u"bin/plugins"_s;
    }

    void aCopyWithItsOwnPluginsSaysWhereTheyAre()
    {
        QFETCH(QByteArray, configuration);
        QFETCH(QString, folder);
        const QTemporaryDir copy;
        const QDir root(copy.path());
        QVERIFY(root.mkdir(u"bin"_s));
        QFile file(root.filePath(u"bin/qt.conf"_s));
        QVERIFY(file.open(QFile::WriteOnly));
        QCOMPARE(file.write(configuration), configuration.size());
        file.close();
        QCOMPARE(pluginFolders(root.filePath(u"bin"_s)), QStringList{root.filePath(folder)});
    }
};

static const RegisteredTest<PluginFoldersTests> registered;
#include "PluginFoldersTests.moc"
