#include "TextCleaning.h"

#include <algorithm>
#include <iterator>

namespace {

bool isBlank(char c)
{
    return c >= '\0' && c <= ' ';
}

std::size_t behindLastBlank(std::string_view text)
{
    const auto last = std::find_if(text.rbegin(), text.rend(), isBlank);
    return static_cast<std::size_t>(std::distance(last, text.rend()));
}

// What a terminal can show without harm.
std::string printable(std::string_view text)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F)
            result += {'\\', 'x', digits[byte >> 4], digits[byte & 0x0FU]};
        else
            result.push_back(c);
    }
    return result;
}

} // namespace

void TextCleaning::add(std::string_view piece)
{
    if (inLongWord_) {
        const auto end = std::find_if(piece.begin(), piece.end(), isBlank);
        const auto length = static_cast<std::size_t>(std::distance(piece.begin(), end));
        output_.write(piece.substr(0, length));
        piece.remove_prefix(length);
        inLongWord_ = piece.empty();
    }
    const std::size_t cut = behindLastBlank(piece);
    if (cut == 0) {
        held_ += piece;
    } else if (held_.empty()) {
        clean(piece.substr(0, cut));
        held_ = piece.substr(cut);
    } else {
        held_ += piece.substr(0, cut);
        clean(held_);
        held_ = piece.substr(cut);
    }
    if (held_.size() > longestWord) {
        output_.write(held_);
        held_ = {};
        inLongWord_ = true;
    }
}

void TextCleaning::finish()
{
    clean(held_);
    held_.clear();
}

void TextCleaning::clean(std::string_view text)
{
    std::size_t copied = 0;
    for (const velmora::LinkEdit &edit : cleaner_.edits(text)) {
        const std::string_view between = text.substr(copied, edit.offset - copied);
        output_.write(between);
        output_.write(edit.replacement);
        reportEdit(between, edit);
        copied = edit.offset + edit.length;
    }
    output_.write(text.substr(copied));
    reportEdit(text.substr(copied), {});
}

// Also keeps count of the lines, which only a report needs.
void TextCleaning::reportEdit(std::string_view before, const velmora::LinkEdit &edit)
{
    if (report_ == nullptr)
        return;
    line_ += static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    for (const velmora::RemovedQueryItem &item : edit.removedItems) {
        report_->write(name_ + ':' + std::to_string(line_) + ": removed " + printable(item.name) +
                       (item.value ? '=' + printable(*item.value) : std::string()) + "; the link is now " +
                       printable(edit.replacement) + '\n');
    }
}
