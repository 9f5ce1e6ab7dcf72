#include "PieceReader.h"

#include <algorithm>
#include <iterator>

namespace {

// Text, its cleaned form and what is between them fit into the second-level cache.
constexpr std::size_t pieceSize = std::size_t{256} * 1024;

// A line is held to its end, because what stands around a link in it says where the link ends. A longer one is cut
// behind words.
constexpr std::size_t longLine = std::size_t{16} * 1024;

} // namespace

bool PieceReader::next(Piece &piece)
{
    // A buffer that a long word made large is given back.
    if (piece.buffer.size() > 4 * pieceSize)
        std::vector<char>().swap(piece.buffer);
    piece.buffer.resize(std::max({piece.buffer.size(), pieceSize, carried_.size()}));
    std::copy(carried_.begin(), carried_.end(), piece.buffer.begin());
    if (inTooLong_)
        nextOfTooLong(piece);
    else
        nextWhole(piece);
    piece.firstLine = line_;
    const std::string_view text = piece.text();
    if (countsLines_)
        line_ += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    return piece.size > 0;
}

void PieceReader::nextWhole(Piece &piece)
{
    std::size_t length = carried_.size();
    std::size_t end = carried_.rfind('\n') + 1; // 0 without any: the rest of the line comes first.
    std::size_t searched = 0;
    while (end == 0 && length <= longest_) {
        const std::size_t before = length;
        length = fill(piece, length);
        const std::string_view text(piece.buffer.data(), length);
        end = length == before ? length : behindLastDelimiter(text, searched);
        searched = length;
        if (length == before)
            break;
    }
    piece.kind = Piece::Kind::whole;
    if (end == 0 && length > longest_) {
        piece.kind = Piece::Kind::tooLong;
        inTooLong_ = true;
        end = length;
    }
    take(piece, end, length);
}

void PieceReader::nextOfTooLong(Piece &piece)
{
    piece.kind = Piece::Kind::restOfTooLong;
    const std::size_t length = fill(piece, 0);
    const std::size_t end = behindFirstDelimiter({piece.buffer.data(), length});
    inTooLong_ = end == 0;
    take(piece, end == 0 ? length : end, length);
}

// Reads behind the first `length` bytes, and gives how many there are then.
std::size_t PieceReader::fill(Piece &piece, std::size_t length)
{
    // Never so large that a word which is too long fits in.
    if (length == piece.buffer.size())
        piece.buffer.resize(std::min(length * 2, std::max(length, longest_) + 1));
    return length + file_.read(std::span(piece.buffer).subspan(length));
}

void PieceReader::take(Piece &piece, std::size_t end, std::size_t length)
{
    piece.size = end;
    carried_.assign(piece.buffer.data() + end, length - end);
}

bool PieceReader::isDelimiter(char c) const
{
    return cut_ == Cut::behindLines ? c == '\n' : c >= '\0' && c <= ' ';
}

std::size_t PieceReader::behindFirstDelimiter(std::string_view text) const
{
    const auto first = std::find_if(text.begin(), text.end(), [this](char c) { return isDelimiter(c); });
    return first == text.end() ? 0 : static_cast<std::size_t>(std::distance(text.begin(), first)) + 1;
}

// Nothing before `from` is a line feed.
std::size_t PieceReader::behindLastDelimiter(std::string_view text, std::size_t from) const
{
    if (const std::size_t lineFeed = text.rfind('\n'); lineFeed != std::string_view::npos && lineFeed >= from)
        return lineFeed + 1;
    const std::size_t wholeLine = std::min(longLine, longest_);
    if (cut_ == Cut::behindLines || text.size() <= wholeLine)
        return 0;
    const std::size_t begin = from <= wholeLine ? 0 : from;
    const std::string_view searched = text.substr(begin);
    const auto last =
        std::find_if(searched.rbegin(), searched.rend(), [this](char c) { return isDelimiter(c); });
    return last == searched.rend() ? 0
                                   : begin + static_cast<std::size_t>(std::distance(last, searched.rend()));
}
