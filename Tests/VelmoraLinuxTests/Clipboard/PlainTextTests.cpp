#include <VelmoraLinux/Clipboard/PlainText.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

namespace {

using Names = std::vector<std::string>;
using Text = std::optional<std::string>;

} // namespace

class PlainTextTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void theBestTargetComesFirst()
    {
        const Names best = {"UTF8_STRING", "text/plain;charset=utf-8",      "text/plain; charset=\"UTF-8\"",
                            "text/plain",  "text/plain;charset=iso-8859-1", "STRING",
                            "TEXT"};
        QCOMPARE(PlainText::targetsAmong({best.rbegin(), best.rend()}), best);
    }

    void whatIsNoPlainTextIsLeftOut()
    {
        const Names other = {"text/html", "text/plainer", "image/png", "TARGETS", "COMPOUND_TEXT",
                             "",          "text"};
        QCOMPARE(PlainText::targetsAmong(other), Names());
    }

    void theTypeSaysHowTheTextIsEncoded_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("text"); // Null: not to be had.
        const auto row = [](const char *type, const QByteArray &bytes, const QByteArray &text) {
            QTest::newRow(type) << QByteArray(type) << bytes << text;
        };
        const QByteArray invalid("a\0\xff\xc3(", 5); // Stays what it is where UTF-8 is meant.
        row("UTF8_STRING", invalid, invalid);
        row("text/plain;charset=utf-8", invalid, invalid);
        row("text/plain;charset=UTF8", invalid, invalid);
        row("text/plain", invalid, invalid);
        row("TEXT", invalid, invalid);
        row("STRING", "gr\xfc\xdf", "gr\xc3\xbc\xc3\x9f");
        row("text/plain;charset=ISO-8859-1", "gr\xfc\xdf", "gr\xc3\xbc\xc3\x9f");
        row("text/plain;charset=windows-1251", "\xe4\xe0", "\xd0\xb4\xd0\xb0");
        row("text/plain;charset=utf-16le", QByteArray("a\0\xfc\0", 4), "a\xc3\xbc");
        row("text/plain;charset=klingon", "a", {});
        row("text/html", "a", {});
        row("INTEGER", "a", {});
        row("COMPOUND_TEXT", "a", {});
    }

    void theTypeSaysHowTheTextIsEncoded()
    {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, text);
        const Text expected = text.isNull() ? Text() : Text(text.toStdString());
        QCOMPARE(PlainText::decoded(type.toStdString(), bytes.toStdString()), expected);
    }

    void aMarkWithoutContentMeansSecret()
    {
        QVERIFY(PlainText::isSecret(""));
        QVERIFY(PlainText::isSecret("secret"));
        QVERIFY(!PlainText::isSecret("public"));
    }
};

static const RegisteredTest<PlainTextTests> registered;
#include "PlainTextTests.moc"
