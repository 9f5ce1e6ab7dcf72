#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

// Works on the pieces of a stream on several threads; they leave in the order in which they came.
//
// Each thread takes the next piece, works on it, and hands it over when its turn has come. So there are never
// more pieces in memory than threads, and a piece that comes alone leaves without waiting for another.
template<typename Piece>
class OrderedPipeline {
public:
    struct Stages {
        // Fills the piece, which was used before or is new; false at the end of the stream. Called by one
        // thread at a time.
        std::function<bool(Piece &)> read;
        // Called by many threads at a time.
        std::function<void(Piece &)> work;
        // Takes the piece, in the order of reading; false when nothing more is wanted. Called by one thread
        // at a time.
        std::function<bool(Piece &)> write;
        // Makes a `read` that waits for input give up, now and from now on: nothing more is wanted.
        std::function<void()> interrupt;
    };

    explicit OrderedPipeline(Stages stages)
        : stages_(std::move(stages))
    {
    }

    // Returns when everything is written, or nothing more is wanted. Works on this thread and at most
    // `threads` in all, which are started as pieces come: one piece is no reason for a second thread. Throws
    // what a stage threw; nothing is written after that. To be called once.
    void run(std::size_t threads)
    {
        wantedHelpers_ = threads - 1;
        takePieces();
        for (std::thread &helper : helpers_)
            helper.join();
        if (problem_)
            std::rethrow_exception(problem_);
    }

private:
    void takePieces() noexcept
    {
        try {
            Piece piece;
            while (const std::optional<std::size_t> number = read(piece)) {
                stages_.work(piece);
                write(*number, piece);
            }
        } catch (...) {
            const std::lock_guard lock(writing_);
            if (!problem_)
                problem_ = std::current_exception();
            stop();
        }
    }

    // The number of the piece, or nothing at the end.
    std::optional<std::size_t> read(Piece &piece)
    {
        const std::lock_guard lock(reading_);
        if (atEnd_)
            return std::nullopt;
        atEnd_ = true; // Also if the stage throws.
        if (!stages_.read(piece))
            return std::nullopt;
        atEnd_ = false;
        if (piecesRead_ > 0 && helpers_.size() < wantedHelpers_)
            startHelper();
        return piecesRead_++;
    }

    void startHelper()
    {
        try {
            helpers_.emplace_back([this] { takePieces(); });
        } catch (const std::system_error &) { // The system grants no more threads.
            wantedHelpers_ = helpers_.size();
        }
    }

    void write(std::size_t number, Piece &piece)
    {
        std::unique_lock lock(writing_);
        turnChanged_.wait(lock, [this, number] { return piecesWritten_ == number || stopped_; });
        if (stopped_)
            return;
        if (!stages_.write(piece))
            stop();
        ++piecesWritten_;
        turnChanged_.notify_all();
    }

    // With `writing_` held.
    void stop()
    {
        stopped_ = true;
        turnChanged_.notify_all();
        stages_.interrupt();
    }

    Stages stages_;

    std::mutex reading_; // Guards these.
    std::size_t wantedHelpers_ = 0;
    std::vector<std::thread> helpers_;
    std::size_t piecesRead_ = 0;
    bool atEnd_ = false;

    std::mutex writing_; // Guards these.
    std::condition_variable turnChanged_;
    std::size_t piecesWritten_ = 0;
    bool stopped_ = false;
    std::exception_ptr problem_;
};
