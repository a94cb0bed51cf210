// SPDX-License-Identifier: MIT
#include "integration/tray/small_disk.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstring>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace orvanta::tests {
namespace {

constexpr const char* kType = "tmpfs";
constexpr const char* kOptions = "size=4m,mode=755";

bool write(const char* path, const QByteArray& text) {
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(text) == text.size();
}

/// Ordinary users may mount where they are alone with themselves.
bool takeOwnFileTree() {
    if (::unshare(CLONE_NEWNS) == 0) {
        return true;
    }
    const QByteArray user = QByteArray::number(::geteuid());
    const QByteArray group = QByteArray::number(::getegid());
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
           write("/proc/self/uid_map", user + ' ' + user + " 1") &&
           write("/proc/self/setgroups", "deny") &&
           write("/proc/self/gid_map", group + ' ' + group + " 1");
}

QString refusal(const char* call) {
    return QStringLiteral("%1 was refused: %2")
        .arg(QLatin1String(call), QString::fromLocal8Bit(::strerror(errno)));
}

} // namespace

SmallDisk::~SmallDisk() {
    if (m_isMounted) {
        ::umount2(path().constData(), MNT_DETACH);
    }
}

QString SmallDisk::mount() {
    if (!takeOwnFileTree()) {
        return refusal("a file tree of its own");
    }
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        return refusal("keeping mounts private");
    }
    QDir().mkpath(m_directory);
    if (::mount(kType, path().constData(), kType, 0, kOptions) != 0) {
        return refusal("mounting a small disk");
    }
    m_isMounted = true;
    return {};
}

bool SmallDisk::fill() const {
    QFile file(ballast());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        return false;
    }
    for (qsizetype size : {1 << 16, 1 << 12, 1}) {
        while (file.write(QByteArray(size, 'x')) == size) {
        }
    }
    return ::write(file.handle(), "x", 1) < 0 && errno == ENOSPC;
}

bool SmallDisk::makeRoom() const {
    return QFile::remove(ballast());
}

bool SmallDisk::setReadOnly(bool isReadOnly) const {
    const unsigned long flags = isReadOnly ? MS_REMOUNT | MS_RDONLY : MS_REMOUNT;
    return ::mount(nullptr, path().constData(), nullptr, flags, kOptions) == 0;
}

QByteArray SmallDisk::path() const {
    return QFile::encodeName(m_directory);
}

} // namespace orvanta::tests
