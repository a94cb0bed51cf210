// SPDX-License-Identifier: MIT
#include "platform/macos/locations.h"

#include "platform/posix/home_directory.h"
#include "platform/posix/posix_error.h"

#include <QDir>
#include <QFile>

#include <array>
#include <cerrno>
#include <climits>
#include <mach-o/dyld.h>
#include <stdlib.h>

namespace orvanta {
namespace {

QString runningExecutable() {
    std::array<char, PATH_MAX> path;
    std::array<char, PATH_MAX> real;
    auto size = static_cast<uint32_t>(path.size());
    // Fails for want of room alone, without an errno.
    const bool fits = ::_NSGetExecutablePath(path.data(), &size) == 0;
    if (!fits || ::realpath(path.data(), real.data()) == nullptr) {
        throw posixError(fits ? errno : ENAMETOOLONG,
                         QStringLiteral("The application's own file could not be found"));
    }
    return QFile::decodeName(real.data());
}

} // namespace

MacLocations::MacLocations(const Environment& environment)
    : m_resourceRoot(QDir::cleanPath(runningExecutable() + QStringLiteral("/../../Resources"))),
      m_applicationSupport(homeDirectory(environment) +
                           QStringLiteral("/Library/Application Support")) {}

} // namespace orvanta
