#include "Messages.h"

namespace {

constexpr std::string_view eraseToLineEnd = "\033[K";

} // namespace

void Messages::complain(std::string_view sentence)
{
    write("velmora-clean: " + std::string(sentence) + '\n');
}

void Messages::write(std::string_view lines)
{
    if (lines.empty())
        return;
    hideProgress();
    output_.write(lines);
}

void Messages::showProgress(std::string_view line)
{
    output_.write('\r' + std::string(line) + std::string(eraseToLineEnd));
    showsProgress_ = true;
}

void Messages::hideProgress()
{
    if (showsProgress_)
        output_.write('\r' + std::string(eraseToLineEnd));
    showsProgress_ = false;
}
