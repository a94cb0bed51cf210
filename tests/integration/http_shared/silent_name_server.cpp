// SPDX-License-Identifier: MIT
#include "integration/http_shared/silent_name_server.h"

#include <QFile>

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvanta {
namespace {

bool put(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(bytes) == bytes.size();
}

bool enterOwnSpace() {
    const QByteArray user = "0 " + QByteArray::number(::geteuid()) + " 1";
    const QByteArray group = "0 " + QByteArray::number(::getegid()) + " 1";
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS | CLONE_NEWNET) == 0 &&
           put(QStringLiteral("/proc/self/uid_map"), user) &&
           put(QStringLiteral("/proc/self/setgroups"), "deny") &&
           put(QStringLiteral("/proc/self/gid_map"), group) &&
           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool raiseLoopback(int socket) {
    ifreq request{};
    qstrncpy(request.ifr_name, "lo", sizeof request.ifr_name);
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    return ::ioctl(socket, SIOCSIFFLAGS, &request) == 0;
}

bool takeTheNameServersPort(int socket) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(53);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

} // namespace

bool SilentNameServer::cover(const char* systemFile, const QByteArray& contents) const {
    const QString path = m_folder.filePath(QString::fromLatin1(systemFile).section(u'/', -1));
    return put(path, contents) &&
           ::mount(QFile::encodeName(path).constData(), systemFile, nullptr, MS_BIND, nullptr) == 0;
}

bool SilentNameServer::start() {
    if (!enterOwnSpace()) {
        return false;
    }
    m_socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    return m_socket >= 0 && raiseLoopback(m_socket) && takeTheNameServersPort(m_socket) &&
           cover("/etc/resolv.conf", "nameserver 127.0.0.1\noptions timeout:5 attempts:2\n") &&
           cover("/etc/nsswitch.conf", "hosts: files dns\n");
}

bool SilentNameServer::wasAsked() const {
    char question[512];
    bool asked = false;
    while (::recv(m_socket, question, sizeof question, 0) > 0) {
        asked = true;
    }
    return asked;
}

} // namespace orvanta
