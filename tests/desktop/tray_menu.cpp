// SPDX-License-Identifier: MIT
#include "desktop/tray_menu.h"

#include <QDBusVariant>

#include <algorithm>

namespace orvanta::tests {
namespace {

const QString kMenu = QStringLiteral("com.canonical.dbusmenu");

TrayMenu::Entry entryFrom(int id, const QVariantMap& properties) {
    const auto value = [&properties](const char* name, const QVariant& otherwise) {
        return properties.value(QLatin1String(name), otherwise);
    };
    return {
        .id = id,
        .label = value("label", QString()).toString(),
        .isSeparator = value("type", QString()).toString() == QLatin1String("separator"),
        .isEnabled = value("enabled", true).toBool(),
        .isVisible = value("visible", true).toBool(),
        .isToggle = !value("toggle-type", QString()).toString().isEmpty(),
        .isChecked = value("toggle-state", 0).toInt() == 1,
    };
}

/// An id, its properties and its children.
TrayMenu::Entry decodeEntry(const QDBusArgument& argument, QList<TrayMenu::Entry>* children) {
    int id = 0;
    QVariantMap properties;
    argument.beginStructure();
    argument >> id >> properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        if (children) {
            children->append(decodeEntry(child.variant().value<QDBusArgument>(), nullptr));
        }
    }
    argument.endArray();
    argument.endStructure();
    return entryFrom(id, properties);
}

} // namespace

QString TrayMenu::Entry::shownText() const {
    QString shown;
    for (qsizetype at = 0; at < label.size(); ++at) {
        if (label[at] == QLatin1Char('_') && ++at == label.size()) {
            break;
        }
        if (label[at] != QChar(0x2060)) {
            shown += label[at];
        }
    }
    return shown;
}

TrayMenu::TrayMenu(const SessionBus& bus, const QString& service, const QString& path)
    : m_bus(bus), m_menu{service, path, kMenu} {}

QList<TrayMenu::Entry> TrayMenu::entries() const {
    const auto reply =
        m_bus.call(m_menu, QStringLiteral("GetLayout"), {0, -1, QVariant(QStringList())});
    QList<Entry> entries;
    if (reply && reply->size() == 2) {
        decodeEntry(reply->at(1).value<QDBusArgument>(), &entries);
    }
    return entries;
}

TrayMenu::Entry TrayMenu::entry(const QString& shownText) const {
    const QList<Entry> all = entries();
    const auto found = std::find_if(all.begin(), all.end(), [&](const Entry& entry) {
        return !entry.isSeparator && entry.shownText() == shownText;
    });
    return found == all.end() ? Entry() : *found;
}

bool TrayMenu::choose(int id) const {
    return m_bus
        .call(m_menu, QStringLiteral("Event"),
              {id, QStringLiteral("clicked"),
               QVariant::fromValue(QDBusVariant(QVariant(QString()))), 0U})
        .has_value();
}

} // namespace orvanta::tests
