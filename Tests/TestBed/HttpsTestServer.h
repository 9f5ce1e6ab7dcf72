#pragma once

#include <QList>
#include <QSslServer>
#include <QTemporaryDir>
#include <QUrl>

#include <chrono>
#include <deque>
#include <functional>

using namespace Qt::StringLiterals;

// A self-signed certificate for one test run.
class TestCertificate {
public:
    // `names` as in "IP:127.0.0.1" or "DNS:other.example". Made with the openssl tool.
    explicit TestCertificate(const QString &names);

    [[nodiscard]] bool isValid() const;
    // Trusts this certificate and no other.
    [[nodiscard]] QSslConfiguration trustingIt() const;
    [[nodiscard]] QSslConfiguration forServer() const;

    [[nodiscard]] QString certificateFile() const { return folder_.filePath(u"certificate.pem"_s); }

private:
    [[nodiscard]] QString keyFile() const { return folder_.filePath(u"key.pem"_s); }

    QTemporaryDir folder_;
};

// A real HTTPS server on the loopback interface that behaves as set and keeps every byte it receives.
class HttpsTestServer : public QObject {
    Q_OBJECT

public:
    struct Request {
        std::chrono::steady_clock::time_point at;
        QByteArray head; // Request line and headers, without the empty line.
        QByteArray body;
    };

    // What to do once a whole request has come.
    using Behaviour = std::function<void(QSslSocket &)>;
    static Behaviour answer(int status, const QByteArray &extraHeaders = {});
    static Behaviour silence(); // Keeps the connection open and says nothing.
    static Behaviour reset();   // Resets the connection without an answer.
    static Behaviour close();   // Closes it properly without an answer.
    static Behaviour endlessBody();
    static Behaviour brokenOffBody();

    explicit HttpsTestServer(const TestCertificate &certificate);

    [[nodiscard]] QUrl url() const;

    void stop() { server_.close(); }

    QList<Request> requests;
    int connections = 0;              // Attempts, failed handshakes included.
    std::deque<Behaviour> behaviours; // In order; the last one stays.

private:
    void serve(QSslSocket &socket);
    void read(QSslSocket &socket, QByteArray &received);

    QSslServer server_;
};
