// SPDX-License-Identifier: MIT
#include "platform/linux/session_bus_probe.h"

#include "platform/posix/socket_calls.h"

#include <QFile>

#include <chrono>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

namespace orvanta {
namespace {

using namespace std::chrono_literals;

constexpr auto kLimit = 5s;

QByteArray sessionBusAddress() {
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    const QByteArray directory = qgetenv("XDG_RUNTIME_DIR");
    if (address.isEmpty() && !directory.isEmpty()) {
        return "unix:path=" + directory + "/bus";
    }
    return address;
}

/// Not open when nobody takes connections there.
FileDescriptor connectTo(const QByteArray& socketName) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socketName.size() >= static_cast<qsizetype>(sizeof address.sun_path)) {
        return {};
    }
    std::memcpy(address.sun_path, socketName.constData(),
                static_cast<std::size_t>(socketName.size()));
    // An abstract name ends where its length says.
    const auto size = offsetof(sockaddr_un, sun_path) +
                      static_cast<std::size_t>(socketName.size()) + (address.sun_path[0] != '\0');
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const bool isConnected =
        socket.isOpen() && ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address),
                                     static_cast<socklen_t>(size)) == 0;
    return isConnected ? std::move(socket) : FileDescriptor();
}

} // namespace

QByteArray localSocketOf(const QByteArray& address) {
    constexpr char kScheme[] = "unix:";
    const QByteArray first = address.split(';').first();
    if (!first.startsWith(kScheme)) {
        return {};
    }
    for (const QByteArray& field : first.mid(qstrlen(kScheme)).split(',')) {
        const qsizetype equals = field.indexOf('=');
        const QByteArray key = field.left(equals);
        const QByteArray value = QByteArray::fromPercentEncoding(field.mid(equals + 1));
        if (key == "path") {
            return value;
        }
        if (key == "abstract") {
            return QByteArray(1, '\0') + value;
        }
    }
    return {};
}

SessionBusProbe::SessionBusProbe(std::function<void(bool)> onAnswer)
    : m_onAnswer(std::move(onAnswer)) {
    m_timer.setSingleShot(true);
    const QByteArray address = sessionBusAddress();
    const QByteArray socketName = localSocketOf(address);
    if (socketName.isEmpty()) {
        answerLater(!address.isEmpty());
    } else {
        ask(socketName);
    }
}

void SessionBusProbe::answerLater(bool isAlive) {
    if (m_notifier) {
        m_notifier->setEnabled(false);
    }
    m_socket.reset();
    m_timer.disconnect();
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer,
                     [onAnswer = m_onAnswer, isAlive] { onAnswer(isAlive); });
    m_timer.start(0s);
}

/// The first line of any client; every bus replies to it, be it with a refusal.
void SessionBusProbe::ask(const QByteArray& socketName) {
    const QByteArray greeting = QByteArray(1, '\0') + "AUTH\r\n";
    m_socket = connectTo(socketName);
    if (!m_socket.isOpen() ||
        sendBytes(m_socket, greeting.constData(), static_cast<std::size_t>(greeting.size())) < 0) {
        answerLater(false);
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &m_timer, [this] { listen(); });
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { answerLater(false); });
    m_timer.start(kLimit);
}

void SessionBusProbe::listen() {
    char byte = 0;
    const ssize_t count = ::recv(m_socket.get(), &byte, 1, 0);
    answerLater(count > 0);
}

} // namespace orvanta
