// SPDX-License-Identifier: MIT
#include "desktop/bus_monitor.h"

#include "desktop/waiting.h"

#include <QMap>

#include <algorithm>

namespace orvanta::tests {

BusMonitor::BusMonitor(const QString& address) : m_bus(address) {
    m_monitor.start(QStringLiteral("dbus-monitor"),
                    {QStringLiteral("--address"), address, QStringLiteral("--profile")});
}

BusMonitor::~BusMonitor() {
    m_monitor.kill();
    m_monitor.waitForFinished();
}

bool BusMonitor::catchUp() {
    const QString mark = QStringLiteral("Mark%1").arg(++m_marks);
    return waitFor([&] {
        // Again and again: at first nobody may be listening yet.
        m_bus.signal(mark);
        m_monitor.waitForReadyRead(20);
        read();
        return std::any_of(m_messages.begin(), m_messages.end(),
                           [&](const Message& message) { return message.member == mark; });
    });
}

void BusMonitor::forget() {
    m_messages.clear();
}

/// Lines of fields between tabs: type, time, serial, sender, destination, path, interface, member;
/// replies end after the destination with the serial they answer.
void BusMonitor::read() {
    m_unread += m_monitor.readAllStandardOutput();
    for (auto end = m_unread.indexOf('\n'); end >= 0; end = m_unread.indexOf('\n')) {
        const QStringList fields = QString::fromUtf8(m_unread.left(end)).split(QLatin1Char('\t'));
        m_unread.remove(0, end + 1);
        if (fields.size() >= 5 && !fields[0].startsWith(QLatin1Char('#'))) {
            m_messages.append({fields[0], fields[3],
                               fields[4] == QLatin1String("<none>") ? QString() : fields[4],
                               fields.value(7)});
        }
    }
}

QList<BusMonitor::Message> BusMonitor::from(const QString& sender) const {
    QList<Message> said;
    std::copy_if(m_messages.begin(), m_messages.end(), std::back_inserter(said),
                 [&](const Message& message) { return message.sender == sender; });
    return said;
}

QList<BusMonitor::Message> BusMonitor::fromProcess(pid_t process) const {
    QMap<QString, pid_t> owners;
    QList<Message> said;
    for (const Message& message : m_messages) {
        if (!owners.contains(message.sender)) {
            owners[message.sender] = m_bus.ownerProcess(message.sender);
        }
        if (owners[message.sender] == process || owners[message.sender] == 0) {
            said.append(message);
        }
    }
    return said;
}

QStringList BusMonitor::namesOf(pid_t process) const {
    const auto reply =
        m_bus.call({QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                    QStringLiteral("org.freedesktop.DBus")},
                   QStringLiteral("ListNames"));
    QStringList names = reply ? reply->value(0).toStringList() : QStringList();
    names.removeIf([&](const QString& name) {
        return !name.startsWith(u':') || m_bus.ownerProcess(name) != process;
    });
    return names;
}

int BusMonitor::count(const QString& sender, const QString& signal) const {
    const QList<Message> said = from(sender);
    return static_cast<int>(std::count_if(said.begin(), said.end(), [&](const Message& message) {
        return message.type == QLatin1String("sig") && message.member == signal;
    }));
}

} // namespace orvanta::tests
