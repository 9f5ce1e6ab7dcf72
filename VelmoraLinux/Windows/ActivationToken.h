#pragma once

#include <QByteArray>

#include <utility>

// The latest XDG activation token: the desktop's permission to bring a window to the front.
class ActivationToken {
public:
    void keep(QByteArray token) { token_ = std::move(token); }

    // A token can be used once; empty when there is none.
    [[nodiscard]] QByteArray take() { return std::exchange(token_, {}); }

private:
    QByteArray token_;
};
