#include <VelmoraMac/Texts/LocalizedStrings.h>

#include <QTest>

#include <Fakes/FakeSystemLanguage.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class LocalizedStringsTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void cleanup() { LocalizedStrings::setSystemLanguage(nullptr); }

    void onlyTheLanguageCodeDeMeansGerman_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<AppLanguage>("language");
        QTest::newRow("German, also in Austria") << u"de"_s << AppLanguage::german;
        QTest::newRow("English, also in Germany") << u"en"_s << AppLanguage::english;
        QTest::newRow("Swiss German has a code of its own") << u"gsw"_s << AppLanguage::english;
        QTest::newRow("no code") << QString() << AppLanguage::english;
        QTest::newRow("not a prefix") << u"den"_s << AppLanguage::english;
    }

    void onlyTheLanguageCodeDeMeansGerman()
    {
        QFETCH(QString, code);
        QFETCH(AppLanguage, language);
        QCOMPARE(LocalizedStrings::defaultLanguage(code), language);
    }

    void aPairIsChosenByTheSetting()
    {
        FakeSystemLanguage french;
        french.languageCode = u"fr"_s;
        LocalizedStrings::setSystemLanguage(&french);
        QCOMPARE(LocalizedStrings::choose(u"Today"_s, u"Heute"_s, AppLanguage::english), u"Today"_s);
        QCOMPARE(LocalizedStrings::choose(u"Today"_s, u"Heute"_s, AppLanguage::german), u"Heute"_s);
    }

    void theSystemsLanguageIsAskedForEveryText()
    {
        FakeSystemLanguage system;
        system.languageCode = u"de"_s;
        LocalizedStrings::setSystemLanguage(&system);
        QCOMPARE(LocalizedStrings::choose(u"Today"_s, u"Heute"_s, AppLanguage::system), u"Heute"_s);
        system.languageCode = u"fr"_s;
        QCOMPARE(LocalizedStrings::choose(u"Today"_s, u"Heute"_s, AppLanguage::system), u"Today"_s);
    }

    void removedCountsHaveNoSingular()
    {
        QCOMPARE(LocalizedStrings::removedCount(0, AppLanguage::english), u"0 removed"_s);
        QCOMPARE(LocalizedStrings::removedCount(1, AppLanguage::english), u"1 removed"_s);
        QCOMPARE(LocalizedStrings::removedCount(1, AppLanguage::german), u"1 entfernt"_s);
        QCOMPARE(LocalizedStrings::removedCount(1234567, AppLanguage::german), u"1234567 entfernt"_s);
    }

    void aBeginningSaysHowLongTheWholeWas()
    {
        QCOMPARE(LocalizedStrings::beginningNote(0, AppLanguage::english), QString());
        QCOMPARE(LocalizedStrings::beginningNote(20'000'000, AppLanguage::english),
                 u" (beginning of 20.0 MB)"_s);
        QCOMPARE(LocalizedStrings::beginningNote(262'145, AppLanguage::german), u" (Anfang von 262,1 kB)"_s);
    }

    void languagesAreOfferedInTheirOrderAndNamedInTheChosenLanguage()
    {
        QCOMPARE(LocalizedStrings::languages(),
                 QList<int>({int(AppLanguage::system), int(AppLanguage::english), int(AppLanguage::german)}));
        const auto english = AppLanguage::english;
        const auto german = AppLanguage::german;
        QCOMPARE(LocalizedStrings::languageName(AppLanguage::system, german), u"System"_s);
        QCOMPARE(LocalizedStrings::languageName(AppLanguage::english, german), u"Englisch"_s);
        QCOMPARE(LocalizedStrings::languageName(AppLanguage::german, german), u"Deutsch"_s);
        QCOMPARE(LocalizedStrings::languageName(AppLanguage::german, english), u"German"_s);
    }
};

static const RegisteredTest<LocalizedStringsTests> registered;
#include "LocalizedStringsTests.moc"
