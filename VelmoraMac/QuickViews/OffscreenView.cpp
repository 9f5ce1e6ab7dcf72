#include "OffscreenView.h"

#include <QCoreApplication>
#include <QDebug>
#include <QQmlComponent>
#include <QQuickRenderTarget>

using namespace Qt::StringLiterals;

OffscreenView::OffscreenView(QQmlEngine &engine, const View &view)
    : control_(std::make_unique<QQuickRenderControl>())
    , window_(control_.get())
{
    window_.setColor(Qt::transparent);
    window_.setTitle(u"Velmora"_s); // Read by assistive tools.
    QQmlComponent component(&engine, view.source);
    QObject *root = component.createWithInitialProperties(view.properties);
    root_.reset(qobject_cast<QQuickItem *>(root));
    if (!root_) {
        delete root;
        qWarning().noquote() << component.errorString();
        return;
    }
    QQmlEngine::setObjectOwnership(root, QQmlEngine::CppOwnership);
    root_->setParentItem(window_.contentItem());
    connect(control_.get(), &QQuickRenderControl::sceneChanged, this, &OffscreenView::changed);
    connect(control_.get(), &QQuickRenderControl::renderRequested, this, &OffscreenView::changed);
}

OffscreenView::~OffscreenView()
{
    close();
    control_.reset();
}

void OffscreenView::resize(QSize size)
{
    window_.resize(size);
    window_.contentItem()->setSize(size);
    if (root_)
        root_->setSize(size);
}

const QImage &OffscreenView::draw(double scale)
{
    const QSize pixels = (QSizeF(window_.size()) * scale).toSize();
    if (picture_.size() != pixels || picture_.devicePixelRatio() != scale) {
        picture_ = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
        picture_.setDevicePixelRatio(scale);
        picture_.fill(Qt::transparent);
        QQuickRenderTarget target = QQuickRenderTarget::fromPaintDevice(&picture_);
        target.setDevicePixelRatio(scale);
        window_.setRenderTarget(target);
    }
    control_->polishItems();
    control_->sync();
    control_->render();
    return picture_;
}

void OffscreenView::deliver(QEvent &event)
{
    QCoreApplication::sendEvent(&window_, &event);
}

void OffscreenView::close()
{
    control_->disconnect(this);
    root_.reset();
}
