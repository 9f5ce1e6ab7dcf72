#pragma once

#include <VelmoraPlatform/StatusItem.h>

#include <QObject>
#include <QVariantList>
#include <qqmlintegration.h>

// The status item's menu as a model for its view, with the entry selected by pointer or arrow keys.
class StatusMenuModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made for each menu that pops up")
    // Each entry has "title" and "checked"; a separator's title is empty.
    Q_PROPERTY(QVariantList entries READ entries CONSTANT)
    Q_PROPERTY(bool hasChecks READ hasChecks CONSTANT)
    Q_PROPERTY(int minimumWidth READ minimumWidth CONSTANT)
    Q_PROPERTY(int current READ current WRITE setCurrent NOTIFY currentChanged) // -1: none.

public:
    StatusMenuModel(StatusMenu menu, int minimumWidth);

    [[nodiscard]] QVariantList entries() const;
    [[nodiscard]] bool hasChecks() const;

    [[nodiscard]] int minimumWidth() const { return minimumWidth_; }

    [[nodiscard]] int current() const { return current_; }

    void setCurrent(int current);
    // To the next entry in direction `step`, which is 1 or -1, beyond separators and around the ends.
    void moveCurrent(int step);
    void moveToFirst();
    void moveToLast();
    // To the next entry that begins with `text`, around the end; stays where it is when none does.
    void moveToNext(const QString &text);
    Q_INVOKABLE void choose(int index);

    void chooseCurrent() { choose(current_); }

Q_SIGNALS:
    void currentChanged();
    void chosen(const std::function<void()> &action);

private:
    [[nodiscard]] bool isChoice(int index) const;

    StatusMenu menu_;
    int minimumWidth_;
    int current_ = -1;
};
