#include "StatusMenuModel.h"

using namespace Qt::StringLiterals;

StatusMenuModel::StatusMenuModel(StatusMenu menu, int minimumWidth)
    : menu_(std::move(menu))
    , minimumWidth_(minimumWidth)
{
}

QVariantList StatusMenuModel::entries() const
{
    QVariantList entries;
    for (const StatusMenuEntry &entry : menu_) {
        entries.append(QVariantMap{{u"title"_s, entry.title},
                                   {u"checked"_s, entry.check == StatusMenuEntry::Check::on}});
    }
    return entries;
}

bool StatusMenuModel::hasChecks() const
{
    return std::any_of(menu_.begin(), menu_.end(), [](const StatusMenuEntry &entry) {
        return entry.check != StatusMenuEntry::Check::none;
    });
}

bool StatusMenuModel::isChoice(int index) const
{
    return index >= 0 && static_cast<size_t>(index) < menu_.size() &&
           !menu_[static_cast<size_t>(index)].isSeparator();
}

void StatusMenuModel::setCurrent(int current)
{
    const int possible = isChoice(current) ? current : -1;
    if (possible == current_)
        return;
    current_ = possible;
    Q_EMIT currentChanged();
}

void StatusMenuModel::moveCurrent(int step)
{
    const int count = static_cast<int>(menu_.size());
    int index = current_ < 0 && step < 0 ? count : current_;
    for (int tries = 0; tries < count; ++tries) {
        index = (index + step + count) % count;
        if (isChoice(index))
            return setCurrent(index);
    }
}

void StatusMenuModel::moveToFirst()
{
    current_ = -1;
    moveCurrent(1);
}

void StatusMenuModel::moveToLast()
{
    current_ = -1;
    moveCurrent(-1);
}

void StatusMenuModel::moveToNext(const QString &text)
{
    const int count = static_cast<int>(menu_.size());
    for (int tries = 1; !text.isEmpty() && tries <= count; ++tries) {
        const int index = (current_ + tries + count) % count;
        if (isChoice(index) && menu_[static_cast<size_t>(index)].title.startsWith(text, Qt::CaseInsensitive))
            return setCurrent(index);
    }
}

void StatusMenuModel::choose(int index)
{
    if (isChoice(index))
        Q_EMIT chosen(menu_[static_cast<size_t>(index)].action);
}
