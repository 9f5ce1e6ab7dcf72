#include "X11WorkAreas.h"

#include <VelmoraLinux/Windows/NativeGeometry.h>

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <array>

namespace {

constexpr quint32 mostWindows = 4096;
constexpr quint32 mostAreas = 64;
constexpr std::size_t strutWords = 12;
constexpr std::size_t areaWords = 4;

// Whether two ranges of pixels, each with its last one, have one in common.
bool meet(int first, int last, quint32 otherFirst, quint32 otherLast)
{
    return static_cast<int>(otherFirst) <= last && static_cast<int>(otherLast) >= first;
}

// In the order of the property: left, right, top, bottom, then begin and end of each along its edge.
void cut(QRect &area, const QRect &monitor, QSize whole, const std::vector<quint32> &strut)
{
    const int left = static_cast<int>(strut[0]);
    const int right = whole.width() - static_cast<int>(strut[1]) - 1;
    const int top = static_cast<int>(strut[2]);
    const int bottom = whole.height() - static_cast<int>(strut[3]) - 1;
    const std::array isBeside{meet(monitor.top(), monitor.bottom(), strut[4], strut[5]),
                              meet(monitor.top(), monitor.bottom(), strut[6], strut[7]),
                              meet(monitor.left(), monitor.right(), strut[8], strut[9]),
                              meet(monitor.left(), monitor.right(), strut[10], strut[11])};
    // A strut that goes beyond the monitor belongs to another one behind it.
    if (strut[0] > 0 && isBeside[0] && left <= monitor.right())
        area.setLeft(std::max(area.left(), left));
    if (strut[1] > 0 && isBeside[1] && right >= monitor.left())
        area.setRight(std::min(area.right(), right));
    if (strut[2] > 0 && isBeside[2] && top <= monitor.bottom())
        area.setTop(std::max(area.top(), top));
    if (strut[3] > 0 && isBeside[3] && bottom >= monitor.top())
        area.setBottom(std::min(area.bottom(), bottom));
}

} // namespace

QRect workAreaOfMonitor(const QRect &monitor, QSize whole, const std::vector<QRect> &areas,
                        const std::vector<std::vector<quint32>> &struts)
{
    const auto told = std::find_if(areas.begin(), areas.end(), [&monitor](const QRect &area) {
        return !area.isEmpty() && monitor.contains(area);
    });
    if (told != areas.end())
        return *told;
    QRect area = monitor;
    for (const std::vector<quint32> &strut : struts) {
        if (strut.size() >= strutWords)
            cut(area, monitor, whole, strut);
    }
    return area.isEmpty() ? monitor : area;
}

QRectF partOfDesktop(const std::vector<quint32> &area, QSize whole)
{
    const QRectF everything(0, 0, 1, 1);
    if (area.size() < areaWords || area[2] == 0 || area[3] == 0 || whole.isEmpty())
        return everything;
    const double width = whole.width();
    const double height = whole.height();
    return everything & QRectF(area[0] / width, area[1] / height, area[2] / width, area[3] / height);
}

X11WorkAreas::X11WorkAreas(X11Display *connection)
    : connection_(connection)
{
}

QRect X11WorkAreas::mainWorkArea() const
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? QRect() : workAreaAt(screen->geometry().center());
}

QRect X11WorkAreas::workAreaAt(QPoint point) const
{
    const QScreen *screen = QGuiApplication::screenAt(point);
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return {};
    if (connection_ == nullptr || QGuiApplication::screens().size() < 2)
        return screen->availableGeometry();
    return toPoints(areaOf(nativeGeometry(*screen)));
}

QRectF X11WorkAreas::freePart() const
{
    if (connection_ == nullptr)
        return partOfDesktop({}, {});
    const auto area =
        connection_->property(connection_->root(), connection_->atom("_NET_WORKAREA"), areaWords);
    return partOfDesktop(area, desktopSize());
}

QSize X11WorkAreas::desktopSize() const
{
    const auto cookie = xcb_get_geometry(connection_->xcb(), connection_->root());
    const XcbReply<xcb_get_geometry_reply_t> root(
        xcb_get_geometry_reply(connection_->xcb(), cookie, nullptr));
    return root ? QSize(root->width, root->height) : QSize();
}

QRect X11WorkAreas::areaOf(const QRect &monitor) const
{
    const QSize whole = desktopSize();
    return whole.isEmpty() ? monitor : workAreaOfMonitor(monitor, whole, areasOfDesktop(), struts());
}

std::vector<QRect> X11WorkAreas::areasOfDesktop() const
{
    const auto desktop =
        connection_->property(connection_->root(), connection_->atom("_NET_CURRENT_DESKTOP"), 1);
    const QByteArray name = "_GTK_WORKAREAS_D" + QByteArray::number(desktop.empty() ? 0 : desktop.front());
    const auto words =
        connection_->property(connection_->root(), connection_->atom(name.constData()), 4 * mostAreas);
    std::vector<QRect> areas;
    for (std::size_t i = 0; i + 3 < words.size(); i += 4)
        areas.emplace_back(static_cast<int>(words[i]), static_cast<int>(words[i + 1]),
                           static_cast<int>(words[i + 2]), static_cast<int>(words[i + 3]));
    return areas;
}

std::vector<std::vector<quint32>> X11WorkAreas::struts() const
{
    const auto windows =
        connection_->property(connection_->root(), connection_->atom("_NET_CLIENT_LIST"), mostWindows);
    return connection_->propertyOf(windows, connection_->atom("_NET_WM_STRUT_PARTIAL"), strutWords);
}
