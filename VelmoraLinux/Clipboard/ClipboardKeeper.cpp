#include "ClipboardKeeper.h"

#include "DataControlDevice.h"

#include <VelmoraLinux/Time/EventLoopScheduler.h>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>

#include <sys/mman.h>

#include <string_view>

namespace {

constexpr std::string_view option = "--keep-clipboard";
constexpr auto mark = "application/x-velmora-kept";

// A file without a name, in memory: the text is in nobody's way there, however long it is.
FileDescriptor memoryFile(const std::string &text)
{
    FileDescriptor file(::memfd_create("velmora-clipboard", MFD_CLOEXEC));
    QFile writer;
    const bool isWritten =
        file.isOpen() && writer.open(file.get(), QIODevice::WriteOnly) &&
        writer.write(text.data(), static_cast<qint64>(text.size())) == static_cast<qint64>(text.size()) &&
        writer.flush();
    return isWritten ? std::move(file) : FileDescriptor();
}

std::string standardInput()
{
    QFile input;
    return input.open(STDIN_FILENO, QIODevice::ReadOnly) ? input.readAll().toStdString() : std::string();
}

// Needs an event loop.
int keep(std::string text)
{
    const auto connection = WaylandConnection::open();
    if (!connection)
        return EXIT_FAILURE;
    EventLoopScheduler scheduler;
    PipeWriters writers(scheduler);
    const auto shared = std::make_shared<const std::string>(std::move(text));
    const auto quit = [] { QCoreApplication::quit(); };
    DataControlDevice *ready = nullptr;
    DataControlDevice device(*connection, writers,
                             {.cancelled = quit,
                              .ready =
                                  [&] {
                                      if (ready != nullptr)
                                          ready->offerText(shared, mark);
                                  },
                              .finished = quit});
    ready = &device;
    connection->setLostHandler(quit);
    return QCoreApplication::exec();
}

} // namespace

bool ClipboardKeeper::start(const QString &program, const std::string &text, const QByteArray &display)
{
    const FileDescriptor file = memoryFile(text);
    if (!file.isOpen())
        return false;
    QProcess keeper;
    keeper.setProgram(program);
    keeper.setArguments({QString::fromLatin1(option.data(), option.size())});
    keeper.setStandardInputFile(QStringLiteral("/proc/self/fd/%1").arg(file.get()));
    keeper.setStandardOutputFile(QProcess::nullDevice());
    keeper.setStandardErrorFile(QProcess::nullDevice());
    keeper.setWorkingDirectory(QStringLiteral("/"));
    if (!display.isEmpty()) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("WAYLAND_DISPLAY"), QString::fromLocal8Bit(display));
        keeper.setProcessEnvironment(environment);
    }
    return keeper.startDetached();
}

std::optional<int> ClipboardKeeper::run(int argc, char **argv)
{
    if (argc != 2 || argv[1] != option)
        return std::nullopt;
    const QCoreApplication application(argc, argv);
    return keep(standardInput());
}
