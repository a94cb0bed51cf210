// SPDX-License-Identifier: MIT
#include "platform/linux/program_lookup.h"

#include <QByteArrayList>

#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {
namespace {

constexpr char kDefaultPath[] = "/usr/local/bin:/usr/bin:/bin";

bool isExecutableFile(const QByteArray& path) {
    struct stat status = {};
    return ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.constData(), X_OK) == 0;
}

std::optional<QByteArray> findOnPath(const EnvironmentVariables& variables,
                                     const QByteArray& name) {
    const QByteArray path = variables.value("PATH").value_or(QByteArray(kDefaultPath));
    for (const QByteArray& directory : path.split(':')) {
        const QByteArray candidate = directory + '/' + name;
        if (directory.startsWith('/') && isExecutableFile(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<QByteArray> findProgram(const EnvironmentVariables& variables,
                                      const QByteArray& name) {
    if (name.contains('/')) {
        return name.startsWith('/') && isExecutableFile(name) ? std::optional(name) : std::nullopt;
    }
    return name.isEmpty() ? std::nullopt : findOnPath(variables, name);
}

} // namespace orvanta
