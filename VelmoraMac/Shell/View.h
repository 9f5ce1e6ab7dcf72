#pragma once

#include <QByteArray>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <vector>

// A screen of the application, described for the factory that shows it.
struct View {
    // A signal of the view without arguments, and its handler.
    struct Request {
        QByteArray signal;
        std::function<void()> handler;
    };

    QUrl source;
    // The view's required properties; objects among them must outlive the view.
    QVariantMap properties;
    std::vector<Request> requests;
};
