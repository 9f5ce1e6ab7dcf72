#include <VelmoraLinux/Process/EnvironmentLanguage.h>

#include <QMap>
#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

using Variables = QMap<QByteArray, QByteArray>;

class EnvironmentLanguageTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void theFirstVariableThatIsSetNamesTheLanguage_data()
    {
        QTest::addColumn<Variables>("variables");
        QTest::addColumn<QString>("code");
        QTest::newRow("none") << Variables() << QString();
        QTest::newRow("German in Austria") << Variables{{"LANG", "de_AT.UTF-8"}} << u"de"_s;
        QTest::newRow("English in Germany") << Variables{{"LANG", "en_DE.UTF-8"}} << u"en"_s;
        QTest::newRow("with a modifier") << Variables{{"LANG", "de@euro"}} << u"de"_s;
        QTest::newRow("bare, in capitals") << Variables{{"LANG", "DE"}} << u"de"_s;
        QTest::newRow("Swiss German") << Variables{{"LANG", "gsw_CH"}} << u"gsw"_s;
        QTest::newRow("messages before the rest")
            << Variables{{"LANG", "en_US"}, {"LC_MESSAGES", "de_DE"}} << u"de"_s;
        QTest::newRow("all before messages")
            << Variables{{"LC_MESSAGES", "de_DE"}, {"LC_ALL", "fr_FR"}} << u"fr"_s;
        QTest::newRow("a list before all")
            << Variables{{"LC_ALL", "fr_FR"}, {"LANGUAGE", "de:en"}} << u"de"_s;
        QTest::newRow("the first of a list that there is")
            << Variables{{"LANG", "fr_FR"}, {"LANGUAGE", "fr_CH:de_CH:en"}} << u"de"_s;
        QTest::newRow("nothing of a list") << Variables{{"LANG", "de_DE"}, {"LANGUAGE", "fr:nl"}} << u"fr"_s;
        QTest::newRow("a list that ends the search")
            << Variables{{"LANG", "de_DE"}, {"LANGUAGE", "fr:C:de"}} << QString();
        QTest::newRow("an empty list") << Variables{{"LANG", "de_DE"}, {"LANGUAGE", ":"}} << u"de"_s;
        QTest::newRow("a list without a locale") << Variables{{"LANGUAGE", "de"}} << QString();
        QTest::newRow("a list under C") << Variables{{"LANG", "C"}, {"LANGUAGE", "de"}} << QString();
        QTest::newRow("a list under C.UTF-8")
            << Variables{{"LC_ALL", "C.UTF-8"}, {"LANG", "de_DE"}, {"LANGUAGE", "de"}} << QString();
        QTest::newRow("an empty one is not set") << Variables{{"LC_ALL", ""}, {"LANG", "de_DE"}} << u"de"_s;
        QTest::newRow("C") << Variables{{"LC_ALL", "C.UTF-8"}, {"LANG", "de_DE"}} << QString();
        QTest::newRow("POSIX") << Variables{{"LANG", "POSIX"}} << QString();
    }

    void theFirstVariableThatIsSetNamesTheLanguage()
    {
        QFETCH(Variables, variables);
        QFETCH(QString, code);
        Variables before;
        for (const char *name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            if (qEnvironmentVariableIsSet(name))
                before.insert(name, qgetenv(name));
            qunsetenv(name);
        }
        for (auto variable = variables.cbegin(); variable != variables.cend(); ++variable)
            qputenv(variable.key().constData(), variable.value());

        const QString found = EnvironmentLanguage({u"en"_s, u"de"_s}).code();

        for (const char *name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
            qunsetenv(name);
        for (auto variable = before.cbegin(); variable != before.cend(); ++variable)
            qputenv(variable.key().constData(), variable.value());
        QCOMPARE(found, code);
    }
};

static const RegisteredTest<EnvironmentLanguageTests> registered;
#include "EnvironmentLanguageTests.moc"
