#pragma once

#include <VelmoraLinux/Process/FileDescriptor.h>

#include <QByteArray>
#include <QTemporaryDir>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// A Wayland compositor that knows nothing but seats and their clipboards, on a thread of its own, and the
// other programs of its session. Does what a test says.
class DataControlServer {
public:
    enum class Protocol { none, ext, wlr };

    // How another program serves its copy.
    enum class Manner {
        prompt,
        silent,  // Takes requests and never answers: a program that hangs.
        endless, // Writes its text again and again.
    };

    using Forms = std::map<std::string, std::string>; // Texts by MIME type.

    explicit DataControlServer(Protocol protocol, int seats = 1);
    ~DataControlServer();
    Q_DISABLE_COPY_MOVE(DataControlServer)

    // As for $WAYLAND_DISPLAY.
    [[nodiscard]] QByteArray display() const;

    // The compositor ends, with all its connections; and begins again under the same name.
    void stop();
    void start();

    // Another program copies. When this returns the clients have been told, whether they listen or not.
    void copy(const Forms &forms, Manner manner = Manner::prompt, int seat = 0);

    void copyText(const std::string &text) { copy({{"text/plain;charset=utf-8", text}}); }

    // The owner ends, nobody takes its place.
    void clear();
    void selectPrimary(const Forms &forms);

    // The MIME types that the other program's present copy was asked for.
    [[nodiscard]] std::vector<std::string> asked();
    // Those that the client offers; empty when the clipboard is not the client's.
    [[nodiscard]] std::vector<std::string> offered();
    // How often a client has changed the clipboard, emptying included; and how often the primary selection.
    [[nodiscard]] int changes();
    [[nodiscard]] int primaryChanges();
    // Another program pastes what the client offers: the end of a pipe to read from.
    [[nodiscard]] FileDescriptor paste(const std::string &type);
    // The same to the end of what it is given, while the event loop goes on; nothing if that does not come.
    [[nodiscard]] std::optional<std::string> pastedText(const std::string &type);

    // Takes the clipboard away from every client.
    void finishDevices();
    void removeSeat(int seat);

private:
    class Compositor; // Lives on the thread.

    void run(const std::function<void(Compositor &)> &action);

    Protocol protocol_;
    int seats_;
    QTemporaryDir folder_;
    std::unique_ptr<Compositor> compositor_;
};
