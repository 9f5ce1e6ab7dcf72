#include "PipeWriters.h"

#include <QSocketNotifier>

#include <fcntl.h>

#include <cerrno>
#include <utility>

namespace {

constexpr auto longestSilence = std::chrono::seconds(10);
constexpr std::size_t mostAtOnce = std::size_t(256) * 1024;
constexpr std::size_t mostWriters = 64;

} // namespace

struct PipeWriters::Writer {
    FileDescriptor pipe;
    std::shared_ptr<const std::string> text;
    std::size_t written = 0;
    std::chrono::nanoseconds lastProgress{};
    QSocketNotifier *notifier = nullptr; // Deleted later, because it may be calling us.
};

PipeWriters::PipeWriters(Scheduler &scheduler)
    : scheduler_(scheduler)
    , steps_(scheduler)
{
}

PipeWriters::~PipeWriters()
{
    while (!writers_.empty())
        end(writers_.begin());
}

void PipeWriters::write(FileDescriptor pipe, std::shared_ptr<const std::string> text)
{
    if (writers_.size() >= mostWriters)
        end(writers_.begin());
    const int number = pipe.get();
    ::fcntl(number, F_SETFL, ::fcntl(number, F_GETFL) | O_NONBLOCK);
    const auto writer = writers_.insert(
        writers_.end(),
        Writer{.pipe = std::move(pipe), .text = std::move(text), .lastProgress = scheduler_.now()});
    writer->notifier = new QSocketNotifier(number, QSocketNotifier::Write);
    QObject::connect(writer->notifier, &QSocketNotifier::activated, writer->notifier,
                     [this, writer] { writeMore(writer); });
    writeMore(writer);
    watch();
}

void PipeWriters::writeMore(Place writer)
{
    const std::size_t left = writer->text->size() - writer->written;
    const ssize_t size =
        ::write(writer->pipe.get(), writer->text->data() + writer->written, std::min(left, mostAtOnce));
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (size < 0) // The reader has closed its end.
        return end(writer);
    writer->lastProgress = scheduler_.now();
    writer->written += static_cast<std::size_t>(size);
    if (writer->written == writer->text->size())
        end(writer);
}

void PipeWriters::end(Place writer)
{
    writer->notifier->setEnabled(false);
    writer->notifier->disconnect();
    writer->notifier->deleteLater();
    writers_.erase(writer);
}

void PipeWriters::watch()
{
    if (writers_.empty() || std::exchange(isWatching_, true))
        return;
    steps_.after(longestSilence, [this] {
        isWatching_ = false;
        for (auto writer = writers_.begin(); writer != writers_.end();) {
            const auto next = std::next(writer);
            if (writer->lastProgress + longestSilence <= scheduler_.now())
                end(writer);
            writer = next;
        }
        watch();
    });
}
