#include "PieceReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace std::string_literals;
using Kind = Piece::Kind;

// Standard input, replaced by a pipe that the test feeds.
class PieceReaderTest : public testing::Test {
public:
    PieceReaderTest()
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe(ends.data()), 0);
        saved_ = ::dup(STDIN_FILENO);
        ::dup2(ends[0], STDIN_FILENO);
        ::close(ends[0]);
        writer_ = ends[1];
        file_ = std::make_unique<InputFile>("-");
    }

    ~PieceReaderTest() override
    {
        closeInput();
        ::dup2(saved_, STDIN_FILENO);
        ::close(saved_);
    }

    void feed(std::string_view text) const
    {
        EXPECT_EQ(::write(writer_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    void closeInput()
    {
        if (writer_ >= 0)
            ::close(writer_);
        writer_ = -1;
    }

    PieceReader reader(PieceReader::Cut cut, std::size_t longest = 1000) const
    {
        return {*file_, cut, longest, true};
    }

    static std::string next(PieceReader &reader)
    {
        Piece piece;
        return reader.next(piece) ? std::string(piece.text()) : "(end)";
    }

    std::unique_ptr<InputFile> file_;

private:
    int saved_ = -1;
    int writer_ = -1;
};

TEST_F(PieceReaderTest, HoldsALineToItsEnd)
{
    PieceReader words = reader(PieceReader::Cut::behindWords);
    feed("_see thr");
    feed("ee_ four\nfive ");
    EXPECT_EQ(next(words), "_see three_ four\n");
    closeInput();
    EXPECT_EQ(next(words), "five ");
    EXPECT_EQ(next(words), "(end)");
    EXPECT_EQ(next(words), "(end)");
}

TEST_F(PieceReaderTest, CutsALongLineBehindTheLastWordThatArrived)
{
    const std::string part(20000, 'x');
    PieceReader words = reader(PieceReader::Cut::behindWords, 100000);
    feed(part + " a\tb\0c"s);
    EXPECT_EQ(next(words), part + " a\tb\0"s);
    feed("d " + part);
    EXPECT_EQ(next(words), "cd ");
    closeInput();
    EXPECT_EQ(next(words), part);
    EXPECT_EQ(next(words), "(end)");
}

TEST_F(PieceReaderTest, CutsALineBehindWordsThatIsLongerThanAWordMayBe)
{
    const std::string part(600, 'x');
    PieceReader words = reader(PieceReader::Cut::behindWords);
    feed(part + ' ' + part);
    EXPECT_EQ(next(words), part + ' ');
}

TEST_F(PieceReaderTest, CutsWordsBehindTheLastLineThatArrived)
{
    PieceReader words = reader(PieceReader::Cut::behindWords);
    feed("one 1\ntwo thr");
    EXPECT_EQ(next(words), "one 1\n");
    feed("ee\nfour five");
    EXPECT_EQ(next(words), "two three\n");
    feed(" six");
    closeInput();
    EXPECT_EQ(next(words), "four five six");
    EXPECT_EQ(next(words), "(end)");
}

TEST_F(PieceReaderTest, GivesWholeLinesAndCountsThem)
{
    PieceReader lines = reader(PieceReader::Cut::behindLines);
    feed("one 1\n\ntwo 2\r\nthree");
    Piece piece;
    ASSERT_TRUE(lines.next(piece));
    EXPECT_EQ(piece.text(), "one 1\n\ntwo 2\r\n");
    EXPECT_EQ(piece.firstLine, 1U);
    closeInput();
    ASSERT_TRUE(lines.next(piece));
    EXPECT_EQ(piece.text(), "three");
    EXPECT_EQ(piece.firstLine, 4U);
    EXPECT_FALSE(lines.next(piece));
}

TEST_F(PieceReaderTest, WaitsForTheEndOfALine)
{
    const std::string word(3000, 'x');
    PieceReader words = reader(PieceReader::Cut::behindWords, 10000);
    feed("a " + word);
    std::thread later([&] { feed(word + " b\nc"); });
    EXPECT_EQ(next(words), "a " + word + word + " b\n");
    later.join();
}

TEST_F(PieceReaderTest, DoesNotHoldAWordThatIsTooLong)
{
    const std::string word(1500, 'x');
    PieceReader words = reader(PieceReader::Cut::behindWords);
    feed(word);
    const auto expectNext = [&words](std::string_view text, Kind kind) {
        Piece piece;
        ASSERT_TRUE(words.next(piece));
        EXPECT_EQ(piece.text(), text);
        EXPECT_EQ(piece.kind, kind);
    };
    expectNext(word, Kind::tooLong);
    feed(word);
    expectNext(word, Kind::restOfTooLong);
    feed("xx y z\nlast");
    expectNext("xx ", Kind::restOfTooLong);
    expectNext("y z\n", Kind::whole); // Without waiting for more.
    feed(word);
    expectNext("last" + word, Kind::tooLong);
    closeInput();
    EXPECT_EQ(next(words), "(end)");
}

TEST_F(PieceReaderTest, KeepsTheEndOfInputThatFollowsAtOnce)
{
    feed("a");
    closeInput();
    PieceReader words = reader(PieceReader::Cut::behindWords);
    EXPECT_EQ(next(words), "a");
    EXPECT_EQ(next(words), "(end)");
}

TEST_F(PieceReaderTest, EndsWhenItsFileIsInterrupted)
{
    PieceReader words = reader(PieceReader::Cut::behindWords);
    std::thread other([this] { file_->interrupt(); });
    EXPECT_EQ(next(words), "(end)");
    other.join();
    feed("never read ");
    EXPECT_EQ(next(words), "(end)");
}

} // namespace
