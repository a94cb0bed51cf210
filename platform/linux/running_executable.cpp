// SPDX-License-Identifier: MIT
#include "platform/linux/running_executable.h"

#include "platform/posix/posix_error.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <climits>
#include <unistd.h>

namespace orvanta {

QString runningExecutable() {
    std::array<char, PATH_MAX> path;
    const ssize_t size = ::readlink("/proc/self/exe", path.data(), path.size());
    if (size < 0) {
        throw posixError(errno, QStringLiteral("The application's own file could not be found"));
    }
    return QFile::decodeName(QByteArray(path.data(), size));
}

} // namespace orvanta
