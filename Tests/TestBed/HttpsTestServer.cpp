#include "HttpsTestServer.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qsizetype contentLength(const QByteArray &head)
{
    for (const QByteArray &line : head.split('\n')) {
        if (line.toLower().startsWith("content-length:"))
            return line.mid(line.indexOf(':') + 1).trimmed().toLongLong();
    }
    return 0;
}

} // namespace

TestCertificate::TestCertificate(const QString &names)
{
    QProcess openssl; // Its output is not needed; a failure is reported by isValid().
    openssl.start(u"openssl"_s,
                  {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                   u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-batch"_s, u"-days"_s, u"2"_s,
                   u"-subj"_s, u"/CN=velmora-test"_s, u"-addext"_s, u"subjectAltName="_s + names,
                   u"-keyout"_s, keyFile(), u"-out"_s, certificateFile()});
    openssl.waitForFinished();
}

bool TestCertificate::isValid() const
{
    return !QSslCertificate(contentsOf(certificateFile())).isNull();
}

QSslConfiguration TestCertificate::trustingIt() const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates({QSslCertificate(contentsOf(certificateFile()))});
    return configuration;
}

QSslConfiguration TestCertificate::forServer() const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(contentsOf(certificateFile())));
    configuration.setPrivateKey(QSslKey(contentsOf(keyFile()), QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

HttpsTestServer::Behaviour HttpsTestServer::answer(int status, const QByteArray &extraHeaders)
{
    return [=](QSslSocket &socket) {
        socket.write("HTTP/1.1 " + QByteArray::number(status) + " Test\r\n" + extraHeaders +
                     "Content-Length: 2\r\nConnection: close\r\n\r\n{}");
        socket.disconnectFromHost();
    };
}

HttpsTestServer::Behaviour HttpsTestServer::silence()
{
    return [](QSslSocket &) {};
}

HttpsTestServer::Behaviour HttpsTestServer::reset()
{
    return [](QSslSocket &socket) { socket.abort(); };
}

HttpsTestServer::Behaviour HttpsTestServer::close()
{
    return [](QSslSocket &socket) { socket.disconnectFromHost(); };
}

HttpsTestServer::Behaviour HttpsTestServer::endlessBody()
{
    return [](QSslSocket &socket) {
        socket.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        const auto more = [&socket] { socket.write(QByteArray(32768, 'x')); };
        connect(&socket, &QSslSocket::encryptedBytesWritten, &socket, more);
        more();
    };
}

HttpsTestServer::Behaviour HttpsTestServer::brokenOffBody()
{
    return [](QSslSocket &socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        socket.flush();
        QTimer::singleShot(50, &socket, &QAbstractSocket::abort);
    };
}

HttpsTestServer::HttpsTestServer(const TestCertificate &certificate)
{
    server_.setSslConfiguration(certificate.forServer());
    connect(&server_, &QSslServer::startedEncryptionHandshake, this, [this] { ++connections; });
    connect(&server_, &QSslServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket *socket = server_.nextPendingConnection())
            serve(*qobject_cast<QSslSocket *>(socket));
    });
    server_.listen(QHostAddress::LocalHost);
}

QUrl HttpsTestServer::url() const
{
    return QUrl(u"https://127.0.0.1:%1/functions/v1/telemetry-events"_s.arg(server_.serverPort()));
}

void HttpsTestServer::serve(QSslSocket &socket)
{
    const auto received = std::make_shared<QByteArray>();
    connect(&socket, &QSslSocket::readyRead, this, [this, &socket, received] { read(socket, *received); });
    connect(&socket, &QSslSocket::disconnected, &socket, &QObject::deleteLater);
    read(socket, *received);
}

void HttpsTestServer::read(QSslSocket &socket, QByteArray &received)
{
    received += socket.readAll();
    const qsizetype end = received.indexOf("\r\n\r\n");
    if (end < 0 || received.size() < end + 4 + contentLength(received.left(end)))
        return;
    requests.append({std::chrono::steady_clock::now(), received.left(end), received.mid(end + 4)});
    received.clear();
    const Behaviour behaviour = behaviours.empty() ? answer(200) : behaviours.front();
    if (behaviours.size() > 1)
        behaviours.pop_front();
    behaviour(socket);
}
