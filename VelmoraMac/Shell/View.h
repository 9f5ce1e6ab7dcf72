#pragma once

#include <QByteArray>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <vector>

// A screen of the application, described for whoever shows it.
struct View {
    // What the view asks for: the name of one of its signals without arguments, and what to do about it.
    struct Request {
        QByteArray signal;
        std::function<void()> handler;
    };

    QUrl source;
    // The view's required properties; objects among them must outlive the view.
    QVariantMap properties;
    std::vector<Request> requests;
};
