#include "OrderedPipeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Number {
    std::size_t value = 0;
};

using Pipeline = OrderedPipeline<Number>;

// Numbers from 0 to before `count`, worked on by nothing and written into a list.
struct Recorder {
    explicit Recorder(std::size_t count)
        : stages{[this, count](Number &number) {
                     if (next == count)
                         return false;
                     number.value = next++;
                     return true;
                 },
                 [](Number &) {},
                 [this](Number &number) {
                     written.push_back(number.value);
                     return true;
                 },
                 [this] { ++interruptions; }}
    {
    }

    std::size_t next = 0;
    std::vector<std::size_t> written;
    std::atomic<int> interruptions = 0;
    Pipeline::Stages stages;
};

std::vector<std::size_t> numbersBelow(std::size_t count)
{
    std::vector<std::size_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

TEST(OrderedPipeline, WritesInTheOrderOfReadingWithAnyNumberOfThreads)
{
    for (const std::size_t threads : {1U, 2U, 3U, 8U}) {
        for (const std::size_t count : {0U, 1U, 2U, 5U, 2000U}) {
            Recorder recorder(count);
            Pipeline(recorder.stages).run(threads);
            EXPECT_EQ(recorder.written, numbersBelow(count)) << threads;
            EXPECT_EQ(recorder.interruptions, 0);
        }
    }
}

TEST(OrderedPipeline, HoldsAPieceThatIsReadyUntilTheOneBeforeItIs)
{
    Recorder recorder(4);
    std::promise<void> laterIsDone;
    recorder.stages.work = [&laterIsDone](const Number &number) {
        if (number.value == 1)
            laterIsDone.get_future().wait();
        if (number.value == 2)
            laterIsDone.set_value();
    };
    Pipeline(recorder.stages).run(2);
    EXPECT_EQ(recorder.written, numbersBelow(4));
}

TEST(OrderedPipeline, HoldsNoMorePiecesThanThreads)
{
    Recorder recorder(500);
    std::atomic<int> held = 0;
    std::atomic<int> most = 0;
    recorder.stages.work = [&](const Number &) {
        const int now = ++held;
        for (int before = most; before < now && !most.compare_exchange_weak(before, now);) {
        }
    };
    const auto write = recorder.stages.write;
    recorder.stages.write = [&](Number &number) {
        --held;
        return write(number);
    };
    Pipeline(recorder.stages).run(3);
    EXPECT_LE(most, 3);
    EXPECT_EQ(recorder.written.size(), 500U);
}

TEST(OrderedPipeline, WritesAPieceBeforeTheNextOneIsThere)
{
    Recorder recorder(20);
    std::vector<std::promise<void>> isWritten(20);
    const auto read = recorder.stages.read;
    recorder.stages.read = [&](Number &number) {
        if (recorder.next > 0)
            isWritten[recorder.next - 1].get_future().wait();
        return read(number);
    };
    const auto write = recorder.stages.write;
    recorder.stages.write = [&](Number &number) {
        const bool goesOn = write(number);
        isWritten[number.value].set_value();
        return goesOn;
    };
    Pipeline(recorder.stages).run(4);
    EXPECT_EQ(recorder.written, numbersBelow(20));
}

TEST(OrderedPipeline, NeedsNoSecondThreadForOnePiece)
{
    Recorder recorder(1);
    std::set<std::thread::id> threads;
    recorder.stages.work = [&threads](const Number &) { threads.insert(std::this_thread::get_id()); };
    Pipeline(recorder.stages).run(8);
    EXPECT_EQ(threads, (std::set{std::this_thread::get_id()}));
}

TEST(OrderedPipeline, WorksOnSeveralPiecesAtATime)
{
    Recorder recorder(3);
    std::promise<void> second;
    std::promise<void> third;
    // Each waits for the other, which one thread could not do.
    recorder.stages.work = [&](const Number &number) {
        if (number.value == 1) {
            second.set_value();
            third.get_future().wait();
        } else if (number.value == 2) {
            third.set_value();
            second.get_future().wait();
        }
    };
    Pipeline(recorder.stages).run(2);
    EXPECT_EQ(recorder.written, numbersBelow(3));
}

TEST(OrderedPipeline, InterruptsAReadThatWaitsWhenNothingMoreIsWanted)
{
    Recorder recorder(1000);
    std::promise<void> interrupted;
    const auto read = recorder.stages.read;
    recorder.stages.read = [&](Number &number) {
        if (recorder.next < 3)
            return read(number);
        interrupted.get_future().wait(); // No input comes any more.
        return false;
    };
    recorder.stages.write = [&](const Number &number) {
        recorder.written.push_back(number.value);
        return number.value < 2;
    };
    recorder.stages.interrupt = [&] { interrupted.set_value(); };
    Pipeline(recorder.stages).run(2);
    EXPECT_EQ(recorder.written, numbersBelow(3));
}

TEST(OrderedPipeline, WritesNothingBehindTheLastPieceWanted)
{
    Recorder recorder(1000);
    recorder.stages.write = [&](const Number &number) {
        recorder.written.push_back(number.value);
        return number.value < 5;
    };
    Pipeline(recorder.stages).run(4);
    EXPECT_EQ(recorder.written, numbersBelow(6));
    EXPECT_GE(recorder.interruptions, 1);
}

TEST(OrderedPipeline, ThrowsWhatAStageThrewAndWritesNoPieceFromThereOn)
{
    const auto failAt = [](std::function<void(Number &)> stage) {
        return [stage = std::move(stage)](Number &number) {
            if (number.value == 7)
                throw std::runtime_error("seven");
            stage(number);
            return true;
        };
    };
    for (const std::size_t threads : {1U, 4U}) {
        Recorder working(1000);
        working.stages.work = failAt([](Number &) {});
        EXPECT_THROW(Pipeline(working.stages).run(threads), std::runtime_error);
        EXPECT_LE(working.written.size(), 7U);
        EXPECT_TRUE(std::is_sorted(working.written.begin(), working.written.end()));

        Recorder writing(1000);
        const auto write = writing.stages.write;
        writing.stages.write = failAt([write](Number &number) { write(number); });
        EXPECT_THROW(Pipeline(writing.stages).run(threads), std::runtime_error);
        EXPECT_EQ(writing.written, numbersBelow(7));

        Recorder reading(1000);
        const auto read = reading.stages.read;
        reading.stages.read = [&, read](Number &number) {
            return reading.next == 7 ? throw std::runtime_error("seven") : read(number);
        };
        EXPECT_THROW(Pipeline(reading.stages).run(threads), std::runtime_error);
        EXPECT_LE(reading.written.size(), 7U);
    }
}

} // namespace
