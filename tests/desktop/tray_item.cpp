// SPDX-License-Identifier: MIT
#include "desktop/tray_item.h"

#include <QDBusObjectPath>
#include <QtEndian>

namespace orvanta::tests {
namespace {

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kItem = QStringLiteral("org.kde.StatusNotifierItem");

QString uniqueNameOf(const SessionBus& bus, const QString& service) {
    const auto reply =
        bus.call({QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                  QStringLiteral("org.freedesktop.DBus")},
                 QStringLiteral("GetNameOwner"), {service});
    return reply && !reply->isEmpty() ? reply->first().toString() : QString();
}

/// Pixels travel as 32 bits each, alpha first.
QImage decodePicture(const QDBusArgument& argument) {
    int width = 0;
    int height = 0;
    QByteArray bytes;
    argument.beginStructure();
    argument >> width >> height >> bytes;
    argument.endStructure();
    if (bytes.size() != qsizetype{4} * width * height) {
        return {};
    }
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        qFromBigEndian<quint32>(bytes.constData() + qsizetype{4} * width * y, width,
                                picture.scanLine(y));
    }
    return picture;
}

} // namespace

QStringList TrayItem::registered() const {
    return m_bus
        .property({kWatcher, QStringLiteral("/StatusNotifierWatcher"), kWatcher},
                  QStringLiteral("RegisteredStatusNotifierItems"))
        .toStringList();
}

bool TrayItem::find(pid_t pid) {
    for (const QString& name : registered()) {
        const QString service = uniqueNameOf(m_bus, name.section(QLatin1Char('/'), 0, 0));
        if (!service.isEmpty() && m_bus.ownerProcess(service) == pid) {
            m_item = {service, QLatin1Char('/') + name.section(QLatin1Char('/'), 1), kItem};
            return true;
        }
    }
    return false;
}

QString TrayItem::text(const QString& property) const {
    return m_bus.property(m_item, property).toString();
}

QString TrayItem::toolTipTitle() const {
    const QVariant value = m_bus.property(m_item, QStringLiteral("ToolTip"));
    if (!value.isValid()) {
        return {};
    }
    const auto argument = value.value<QDBusArgument>();
    QString icon;
    QString title;
    QString text;
    argument.beginStructure();
    argument >> icon;
    argument.beginArray();
    while (!argument.atEnd()) {
        decodePicture(argument);
    }
    argument.endArray();
    argument >> title >> text;
    argument.endStructure(); // without which the argument leaks
    return title;
}

QMap<int, QImage> TrayItem::pictures() const {
    const QVariant value = m_bus.property(m_item, QStringLiteral("IconPixmap"));
    QMap<int, QImage> pictures;
    if (!value.isValid()) {
        return pictures;
    }
    const auto argument = value.value<QDBusArgument>();
    argument.beginArray();
    while (!argument.atEnd()) {
        const QImage picture = decodePicture(argument);
        pictures.insert(picture.width(), picture);
    }
    argument.endArray();
    return pictures;
}

QString TrayItem::menuPath() const {
    return m_bus.property(m_item, QStringLiteral("Menu")).value<QDBusObjectPath>().path();
}

bool TrayItem::announceClick(const QString& activationToken) const {
    return m_bus.call(m_item, QStringLiteral("ProvideXdgActivationToken"), {activationToken})
        .has_value();
}

bool TrayItem::activate() const {
    return m_bus.call(m_item, QStringLiteral("Activate"), {0, 0}).has_value();
}

bool TrayItem::askForMenu() const {
    return m_bus.call(m_item, QStringLiteral("ContextMenu"), {0, 0}).has_value();
}

} // namespace orvanta::tests
