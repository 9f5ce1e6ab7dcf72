// velmora-release: makes the update key, signs an archive and announces it in the update feed.

#include "AppcastWriter.h"
#include "SigningKey.h"

#include <VelmoraLinux/Updates/VerifiedArchive.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <sodium.h>

#include <array>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int failed = 1;
constexpr int misused = 2;

int fail(const QString &problem)
{
    std::fprintf(stderr, "velmora-release: %s\n", qPrintable(problem));
    return failed;
}

void print(const QString &text)
{
    std::printf("%s\n", qPrintable(text));
}

int makeKeys(const QStringList &arguments)
{
    QString problem;
    const auto key = SigningKey::create(arguments[0], problem);
    if (!key)
        return fail(problem);
    print(key->publicKey());
    return 0;
}

int showPublicKey(const QStringList &arguments)
{
    QString problem;
    const auto key = SigningKey::read(arguments[0], problem);
    if (!key)
        return fail(problem);
    print(key->publicKey());
    return 0;
}

// The archive as the feed announces it; the signature is verified as every installed copy will verify it.
std::optional<AppcastEnclosure> signedEnclosure(const QString &keyFile, const QString &archive,
                                                QString &problem)
{
    const auto key = SigningKey::read(keyFile, problem);
    if (!key)
        return std::nullopt;
    AppcastEnclosure result;
    result.length = QFileInfo(archive).size();
    result.type = archive.endsWith(u".AppImage") ? u"application/vnd.appimage"_s
                  : archive.endsWith(u".tar.xz") ? u"application/x-xz"_s
                  : archive.endsWith(u".tar.gz") ? u"application/gzip"_s
                                                 : QString();
    const auto signature = key->sign(archive);
    if (!signature || result.type.isEmpty()) {
        problem = archive + (signature ? u": neither .tar.xz nor .tar.gz nor .AppImage"_s
                                       : u": empty, or cannot be read"_s);
        return std::nullopt;
    }
    result.signature = *signature;
    const auto publicKey = UpdateKey::fromBase64(key->publicKey());
    if (!publicKey || !VerifiedArchive::open(archive, result.length, result.signature, *publicKey)) {
        problem = archive + u": changed while it was being signed"_s;
        return std::nullopt;
    }
    return result;
}

int signArchive(const QStringList &arguments)
{
    QString problem;
    const auto enclosure = signedEnclosure(arguments[0], arguments[1], problem);
    if (!enclosure)
        return fail(problem);
    print(u"sparkle:edSignature=\"%1\" length=\"%2\""_s.arg(enclosure->signature).arg(enclosure->length));
    return 0;
}

int verifyArchive(const QStringList &arguments)
{
    const auto key = UpdateKey::fromBase64(arguments[0]);
    if (!key)
        return fail(u"\"%1\" is no public key"_s.arg(arguments[0]));
    if (!VerifiedArchive::open(arguments[1], QFileInfo(arguments[1]).size(), arguments[2], *key))
        return fail(arguments[1] + u": the signature is not that of this file"_s);
    return 0;
}

std::optional<QString> notesFrom(const QString &path, QString &problem)
{
    if (path.isEmpty())
        return QString();
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        return QString::fromUtf8(file.readAll()).trimmed();
    problem = u"%1: %2"_s.arg(path, file.errorString());
    return std::nullopt;
}

QDateTime publicationTime()
{
    bool isSet = false;
    const qint64 seconds = qEnvironmentVariable("SOURCE_DATE_EPOCH").toLongLong(&isSet);
    const QDateTime time = isSet ? QDateTime::fromSecsSinceEpoch(seconds) : QDateTime::currentDateTime();
    return QDateTime::fromSecsSinceEpoch(time.toSecsSinceEpoch()).toUTC();
}

int announce(const QStringList &arguments, const QCommandLineParser &options)
{
    QString problem;
    auto enclosure = signedEnclosure(arguments[0], arguments[1], problem);
    const auto notes = notesFrom(options.value(u"notes"_s), problem);
    if (!enclosure || !notes)
        return fail(problem);
    enclosure->url = QUrl(options.value(u"url"_s), QUrl::StrictMode);
    enclosure->system = u"linux"_s;
    enclosure->architecture = options.value(u"architecture"_s);
    if (enclosure->url.scheme() != u"https" || enclosure->url.host().isEmpty())
        return fail(u"--url \"%1\" is no https address"_s.arg(options.value(u"url"_s)));
    AppcastItem item;
    item.version = options.value(u"release"_s).trimmed();
    item.shownVersion = options.isSet(u"shown"_s) ? options.value(u"shown"_s) : item.version;
    item.notes = *notes;
    item.minimumSystem = options.value(u"minimum-system"_s);
    item.critical = options.isSet(u"critical"_s);
    item.published = publicationTime();
    item.enclosures = {*enclosure};
    if (item.version.isEmpty())
        return fail(u"--release is missing"_s);
    return addToAppcast(arguments[2], item, problem) ? 0 : fail(problem);
}

struct Command {
    QStringView name;
    qsizetype arguments = 0;
    int (*run)(const QStringList &arguments, const QCommandLineParser &options) = nullptr;
};

constexpr auto commands = std::to_array<Command>({
    {u"keys", 1, [](const QStringList &a, const QCommandLineParser &) { return makeKeys(a); }},
    {u"public-key", 1, [](const QStringList &a, const QCommandLineParser &) { return showPublicKey(a); }},
    {u"sign", 2, [](const QStringList &a, const QCommandLineParser &) { return signArchive(a); }},
    {u"verify", 3, [](const QStringList &a, const QCommandLineParser &) { return verifyArchive(a); }},
    {u"announce", 3, announce},
});

void describe(QCommandLineParser &parser)
{
    parser.setApplicationDescription(
        u"Makes the update key, signs an archive and announces it in the update feed.\n\n"
        "  keys KEYFILE                       make a new key; prints the public half for SUPublicEDKey\n"
        "  public-key KEYFILE                 print the public half again\n"
        "  sign KEYFILE ARCHIVE               print signature and length\n"
        "  verify PUBLICKEY ARCHIVE SIGNATURE check a signature\n"
        "  announce KEYFILE ARCHIVE APPCAST   sign and put an entry at the head of the feed"_s);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(u"command"_s, u"One of the above, with its arguments."_s);
    parser.addOptions({
        {u"release"_s, u"Machine version that is announced."_s, u"version"_s},
        {u"shown"_s, u"Version as users read it; the machine version by default."_s, u"version"_s},
        {u"url"_s, u"Where the archive will lie; https."_s, u"address"_s},
        {u"notes"_s, u"Release notes, plain text."_s, u"file"_s},
        {u"architecture"_s, u"Processor, as `uname -m` says it."_s, u"name"_s, u"x86_64"_s},
        {u"minimum-system"_s, u"Oldest C library that can run it."_s, u"version"_s},
        {u"critical"_s, u"The update cannot be skipped."_s},
    });
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"velmora-release"_s);
    QCoreApplication::setApplicationVersion(u"" VELMORA_VERSION ""_s);
    QCommandLineParser parser;
    describe(parser);
    parser.process(application);
    QStringList arguments = parser.positionalArguments();
    const QString name = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (sodium_init() < 0)
        return fail(u"libsodium does not work here"_s);
    for (const Command &command : commands) {
        if (command.name == name && command.arguments == arguments.size())
            return command.run(arguments, parser);
    }
    std::fprintf(stderr, "velmora-release: unknown command or wrong number of arguments; see --help\n");
    return misused;
}
