// SPDX-License-Identifier: MIT
#include "platform/linux/locations.h"

#include "platform/posix/home_directory.h"

#include <QDir>

namespace orvanta {
namespace {

QString dataHome(const Environment& environment) {
    const QString given = absolutePath(environment, "XDG_DATA_HOME");
    return given.isEmpty() ? homeDirectory(environment) + QStringLiteral("/.local/share") : given;
}

} // namespace

LinuxLocations::LinuxLocations(const Environment& environment, const QString& executable)
    : m_resourceRoot(QDir::cleanPath(executable + QStringLiteral("/../../share/orvanta"))),
      m_applicationSupport(dataHome(environment)) {}

} // namespace orvanta
