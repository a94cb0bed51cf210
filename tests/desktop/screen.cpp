// SPDX-License-Identifier: MIT
#include "desktop/screen.h"

#include <cstdlib>
#include <cstring>
#include <xcb/xcb.h>

namespace orvanta::tests {
namespace {

/// Less is a helper window of some toolkit.
constexpr int kLeastSide = 20;

struct Freed {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Freed>;

bool isOpen(xcb_connection_t* connection, xcb_window_t window, bool pastAnyManager) {
    const Owned<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, window), nullptr));
    return attributes && (attributes->override_redirect != 0) == pastAnyManager &&
           attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
           attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

QRect areaOf(xcb_connection_t* connection, xcb_drawable_t drawable) {
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, drawable), nullptr));
    return geometry ? QRect(geometry->x, geometry->y, geometry->width, geometry->height) : QRect();
}

} // namespace

Screen::Screen(const QString& displayName)
    : m_connection(xcb_connect(displayName.toLatin1().constData(), nullptr)) {
    if (!xcb_connection_has_error(m_connection)) {
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    }
}

Screen::~Screen() {
    xcb_disconnect(m_connection);
}

QImage Screen::picture() const {
    const QRect area = areaOf(m_connection, m_root);
    const Owned<xcb_get_image_reply_t> image(
        xcb_get_image_reply(m_connection,
                            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, 0, 0,
                                          static_cast<uint16_t>(area.width()),
                                          static_cast<uint16_t>(area.height()), ~0U),
                            nullptr));
    if (!image) {
        return {};
    }
    // 24 bits deep, 32 bits each, in the order of this machine.
    QImage picture(area.size(), QImage::Format_RGB32);
    std::memcpy(picture.bits(), xcb_get_image_data(image.get()),
                static_cast<std::size_t>(picture.sizeInBytes()));
    return picture;
}

QList<QRect> Screen::menus() const {
    return topWindows(true);
}

QList<QRect> Screen::windows() const {
    return topWindows(false);
}

QList<QRect> Screen::topWindows(bool pastAnyManager) const {
    const Owned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_root), nullptr));
    QList<QRect> windows;
    for (int index = 0; tree && index < xcb_query_tree_children_length(tree.get()); ++index) {
        const xcb_window_t window = xcb_query_tree_children(tree.get())[index];
        const QRect area = areaOf(m_connection, window);
        if (area.width() >= kLeastSide && area.height() >= kLeastSide &&
            isOpen(m_connection, window, pastAnyManager)) {
            windows.append(area);
        }
    }
    return windows;
}

} // namespace orvanta::tests
