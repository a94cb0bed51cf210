// SPDX-License-Identifier: MIT
#include "platform/macos/tray_host.h"

namespace orvanta {

void MenuBarHost::watch(std::function<void(Event)> observer) {
    QMetaObject::invokeMethod(
        &m_context, [observer = std::move(observer)] { observer(Event::appeared); },
        Qt::QueuedConnection);
}

QString MenuBarHost::hint() const {
    return QStringLiteral(
        "the icon is in the menu bar, which hides icons that it has no room for.");
}

/// The menus here know no mnemonics; the toolkit takes every single "&" away.
QString MenuBarHost::menuText(const QString& text) const {
    QString result = text;
    return result.replace(u'&', QLatin1String("&&"));
}

} // namespace orvanta
