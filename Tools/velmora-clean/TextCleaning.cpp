#include "TextCleaning.h"

#include "Printable.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

// Writes a line for each removed parameter.
class Report final : public velmora::CleaningVisitor {
public:
    Report(const Piece &piece, std::string_view name, std::string &lines)
        : text_(piece.text())
        , line_(piece.firstLine)
        , name_(name)
        , lines_(lines)
    {
    }

    void visitRemovedItem(std::string_view name, std::optional<std::string_view> value) override
    {
        items_.push_back(printable(name) + (value ? '=' + printable(*value) : std::string()));
    }

    void visitCleanedLink(std::size_t offset, std::size_t /*length*/, std::string_view replacement) override
    {
        const std::string_view before = text_.substr(counted_, offset - counted_);
        line_ += static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
        counted_ = offset;
        const std::string place = name_ + ':' + std::to_string(line_) + ": removed ";
        const std::string link = "; the link is now " + printable(replacement) + '\n';
        for (const std::string &item : items_)
            lines_.append(place).append(item).append(link);
        items_.clear();
    }

private:
    std::string_view text_;
    std::size_t counted_ = 0; // Up to here line feeds were counted.
    std::size_t line_;
    std::string name_;
    std::string &lines_;
    std::vector<std::string> items_; // Of the link that comes next.
};

} // namespace

void TextCleaning::clean(const Piece &piece, CleanedPiece &result) const
{
    if (piece.kind != Piece::Kind::whole) {
        result.output = piece.text();
        result.changed = false;
        return;
    }
    Report report(piece, name_, result.messages);
    result.changed = cleaner_.appendCleaned(piece.text(), result.output, report_ ? &report : nullptr);
}
