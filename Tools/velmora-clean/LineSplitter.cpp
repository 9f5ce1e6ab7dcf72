#include "LineSplitter.h"

void LineSplitter::add(std::string_view piece)
{
    while (true) {
        const std::size_t end = piece.find('\n');
        if (end == std::string_view::npos)
            break;
        if (line_.empty() && !tooLong_ && end <= longestLine_) {
            receiver_(piece.substr(0, end), false);
        } else {
            append(piece.substr(0, end));
            endLine();
        }
        piece.remove_prefix(end + 1);
    }
    append(piece);
}

void LineSplitter::finish()
{
    if (!line_.empty())
        endLine();
}

void LineSplitter::append(std::string_view part)
{
    const std::size_t room = longestLine_ - line_.size();
    tooLong_ = tooLong_ || part.size() > room;
    line_ += part.substr(0, room);
}

void LineSplitter::endLine()
{
    receiver_(line_, tooLong_);
    line_.clear();
    tooLong_ = false;
}
