#include "TelemetryMarks.h"

using namespace Qt::StringLiterals;

namespace {

QList<QByteArray> spellingsOf(const QByteArray &mark)
{
    QList<QByteArray> spellings{mark, mark.toHex()};
    // Base64 encodes a text differently at each of three offsets; characters shared with neighbouring bytes
    // are left out.
    for (const int offset : {0, 1, 2}) {
        const QByteArray shifted = QByteArray(offset, 'x') + mark;
        const QByteArray base64 = shifted.toBase64(QByteArray::OmitTrailingEquals).toLower();
        spellings.append(base64.mid(offset == 0 ? 0 : offset + 1).chopped(shifted.size() % 3 == 0 ? 0 : 1));
    }
    return spellings;
}

} // namespace

QByteArray TelemetryMarks::copiedText(int number)
{
    return "zqprose https://zquser@zqhost" + QByteArray::number(number) +
           ".example/zqpath?zqkept=zqvalue&utm_zqtracker=zqsecret#zqfragment zqprose";
}

QStringList TelemetryMarks::in(const QByteArray &bytes)
{
    const QByteArray searched = bytes.toLower();
    QStringList found;
    for (const char *mark : {"zqhost", "zqpath", "zqkept", "zqvalue", "zqtracker", "zqprose", "zqfragment",
                             "zqignored", "zquser", "zqsecret"}) {
        for (const QByteArray &spelling : spellingsOf(mark)) {
            if (searched.contains(spelling))
                found.append(QString::fromLatin1(mark));
        }
    }
    return found;
}
