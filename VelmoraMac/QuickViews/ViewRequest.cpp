#include "ViewRequest.h"

#include <QDebug>
#include <QMetaMethod>

ViewRequest::ViewRequest(QObject *view, std::function<void()> handler)
    : QObject(view)
    , handler_(std::move(handler))
{
}

void ViewRequest::connect(QObject *view, const View::Request &request)
{
    if (view == nullptr)
        return; // The view could not be loaded, which Qt has reported.
    const int signal = view->metaObject()->indexOfSignal(QByteArray(request.signal + "()").constData());
    if (signal < 0) {
        qWarning() << view->metaObject()->className() << "has no signal" << request.signal;
        return;
    }
    auto *target = new ViewRequest(view, request.handler);
    const int slot = staticMetaObject.indexOfSlot("run()");
    QObject::connect(view, view->metaObject()->method(signal), target, staticMetaObject.method(slot));
}

void ViewRequest::run()
{
    const auto handler = handler_; // It may delete the view, and this object with it.
    handler();
}
