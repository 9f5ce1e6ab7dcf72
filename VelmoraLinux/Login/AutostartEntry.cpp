#include "AutostartEntry.h"

#include <QStringView>

using namespace Qt::StringLiterals;

namespace {

// A value of type string, with the escape sequences of the Desktop Entry Specification.
QString escapedValue(const QString &text)
{
    QString result;
    for (const QChar c : text) {
        if (c == u'\\')
            result += u"\\\\";
        else if (c == u'\n')
            result += u"\\n";
        else if (c == u'\t')
            result += u"\\t";
        else if (c == u'\r')
            result += u"\\r";
        else if (c == u' ' && result.isEmpty())
            result += u"\\s";
        else
            result += c;
    }
    return result;
}

// One quoted argument of the key Exec: four characters are escaped with a backslash; '%' begins a field code
// and is doubled.
QString quotedWord(const QString &word)
{
    constexpr QStringView special = u"\"`$\\";
    QString result = u"\""_s;
    for (const QChar c : word) {
        if (special.contains(c))
            result += u'\\';
        result += c;
        if (c == u'%')
            result += c;
    }
    return result + u'"';
}

} // namespace

std::optional<QByteArray> autostartEntry(const QString &program, const QString &icon)
{
    if (!program.startsWith(u'/') || program.contains(u'=') || program.contains(QChar(u'\0')))
        return std::nullopt;
    const QString entry = u"[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Velmora\n"
                          "Comment=Removes tracking parameters from copied links\n"
                          "Comment[de]=Entfernt Tracking-Parameter aus kopierten Links\n"
                          "Exec=%1\n"
                          "TryExec=%2\n"
                          "Icon=%3\n"
                          "Terminal=false\n"
                          "NoDisplay=true\n"
                          "Hidden=false\n"
                          "StartupNotify=false\n"
                          "X-GNOME-Autostart-enabled=true\n"
                          "X-KDE-autostart-after=panel\n"
                          "X-LXQt-Need-Tray=true\n"_s;
    return entry.arg(escapedValue(quotedWord(program)), escapedValue(program), escapedValue(icon)).toUtf8();
}
