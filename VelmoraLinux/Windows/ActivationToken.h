#pragma once

#include <QByteArray>

#include <utility>

// The desktop's permission to come to the front, as the latest action of the user carried it.
class ActivationToken {
public:
    void keep(QByteArray token) { token_ = std::move(token); }

    // A token serves once; empty when there is none.
    [[nodiscard]] QByteArray take() { return std::exchange(token_, {}); }

private:
    QByteArray token_;
};
