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
    if (::unshare(CLONE_NEWNS) != 0) {
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
