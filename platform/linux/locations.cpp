// SPDX-License-Identifier: MIT
#include "platform/linux/locations.h"

#include "platform/posix/home_directory.h"
#include "platform/posix/posix_error.h"

#include <QDir>
#include <QFile>

#include <array>
#include <cerrno>
#include <climits>
#include <unistd.h>

namespace orvanta {
namespace {

/// Read as a link and not resolved, so that it still holds after the file has been replaced.
QString runningExecutable() {
    std::array<char, PATH_MAX> path;
    const ssize_t size = ::readlink("/proc/self/exe", path.data(), path.size());
    if (size < 0) {
        throw posixError(errno, QStringLiteral("The application's own file could not be found"));
    }
    return QFile::decodeName(QByteArray(path.data(), size));
}

QString dataHome(const Environment& environment) {
    const QString given = absolutePath(environment, "XDG_DATA_HOME");
    return given.isEmpty() ? homeDirectory(environment) + QStringLiteral("/.local/share") : given;
}

} // namespace

LinuxLocations::LinuxLocations(const Environment& environment)
    : LinuxLocations(environment, runningExecutable()) {}

LinuxLocations::LinuxLocations(const Environment& environment, const QString& executable)
    : m_resourceRoot(QDir::cleanPath(executable + QStringLiteral("/../../share/orvanta"))),
      m_applicationSupport(dataHome(environment)) {}

} // namespace orvanta
