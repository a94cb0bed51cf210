// SPDX-License-Identifier: MIT
#include "desktop/panel.h"

#include "desktop/session_bus.h"
#include "desktop/waiting.h"

#include <QDir>
#include <QFile>

namespace orvanta::tests {
namespace {

const QString kConfiguration = QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="%1"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="32"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray">
      <property name="icon-size" type="int" value="24"/>
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
)");

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");

} // namespace

Panel::Panel(const DesktopSession& session, Edge edge) : m_session(session), m_edge(edge) {
    const QString directory =
        session.configDirectory() + QStringLiteral("/xfce4/xfconf/xfce-perchannel-xml");
    QDir().mkpath(directory);
    QFile file(directory + QStringLiteral("/xfce4-panel.xml"));
    if (file.open(QIODevice::WriteOnly)) {
        const QString position =
            edge == Edge::upper ? QStringLiteral("p=6;x=0;y=0") : QStringLiteral("p=8;x=0;y=768");
        file.write(kConfiguration.arg(position).toUtf8());
    }
}

bool Panel::start() {
    m_process.setProcessEnvironment(m_session.environment());
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    // Without a window manager it would wait for one.
    m_process.start(QStringLiteral("xfce4-panel"), {QStringLiteral("--disable-wm-check")});
    return waitFor([this] { return takesIcons(); });
}

void Panel::kill() {
    m_process.kill();
    m_process.waitForFinished();
}

bool Panel::takesIcons() const {
    const SessionBus bus(m_session.busAddress());
    return bus
        .property({kWatcher, QStringLiteral("/StatusNotifierWatcher"), kWatcher},
                  QStringLiteral("IsStatusNotifierHostRegistered"))
        .toBool();
}

QRect Panel::iconArea(const QImage& screen) const {
    // Without the line that is the panel's edge.
    const QRect panel(0, m_edge == Edge::upper ? 0 : screen.height() - kHeight + 1, screen.width(),
                      kHeight - 1);
    QRect area;
    for (int y = panel.top(); y <= panel.bottom(); ++y) {
        const QRgb background = screen.pixel(panel.right(), y);
        for (int x = panel.left(); x <= panel.right(); ++x) {
            if (screen.pixel(x, y) != background) {
                area |= QRect(x, y, 1, 1);
            }
        }
    }
    return area;
}

} // namespace orvanta::tests
