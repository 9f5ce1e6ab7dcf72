#include <VelmoraMac/Shell/StatusMenuModel.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class StatusMenuModelTests : public QObject {
    Q_OBJECT

    StatusMenuModel model_{StatusMenu{{u"Pause Cleaning"_s, StatusMenuEntry::Check::none, {}},
                                      {},
                                      {u"History"_s, StatusMenuEntry::Check::none, {}},
                                      {u"Settings"_s, StatusMenuEntry::Check::none, {}},
                                      {u"Start at Login"_s, StatusMenuEntry::Check::off, {}}},
                           180};

private Q_SLOTS:

    void init() { model_.setCurrent(-1); }

    void homeAndEndReachTheEnds()
    {
        model_.moveToLast();
        QCOMPARE(model_.current(), 4);
        model_.moveToFirst();
        QCOMPARE(model_.current(), 0);
        model_.moveCurrent(1); // Beyond the separator.
        QCOMPARE(model_.current(), 2);
    }

    void aTypedLetterSelectsTheNextEntryThatBeginsWithIt()
    {
        model_.moveToNext(u"s"_s);
        QCOMPARE(model_.current(), 3);
        model_.moveToNext(u"S"_s);
        QCOMPARE(model_.current(), 4);
        model_.moveToNext(u"s"_s);
        QCOMPARE(model_.current(), 3);
        model_.moveToNext(u"x"_s);
        QCOMPARE(model_.current(), 3);
        model_.moveToNext(QString());
        QCOMPARE(model_.current(), 3);
        model_.moveToNext(u"p"_s);
        QCOMPARE(model_.current(), 0);
    }
};

static const RegisteredTest<StatusMenuModelTests> registered;
#include "StatusMenuModelTests.moc"
