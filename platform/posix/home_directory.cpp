// SPDX-License-Identifier: MIT
#include "platform/posix/home_directory.h"

#include "platform/posix/posix_error.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace orvanta {
namespace {

QString homeInDatabase() {
    constexpr std::size_t kLargestEntry = 64 * 1024;
    std::vector<char> buffer(kLargestEntry);
    passwd entry{};
    passwd* found = nullptr;
    const int error = ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    if (found == nullptr) {
        throw posixError(error != 0 ? error : ENOENT,
                         QStringLiteral("Your home folder could not be found"));
    }
    return QDir::cleanPath(QFile::decodeName(entry.pw_dir));
}

} // namespace

QString absolutePath(const Environment& environment, const char* name) {
    const QByteArray value = environment.variables().value(name).value_or(QByteArray());
    return value.startsWith('/') ? QDir::cleanPath(QFile::decodeName(value)) : QString();
}

QString homeDirectory(const Environment& environment) {
    const QString home = absolutePath(environment, "HOME");
    return home.isEmpty() ? homeInDatabase() : home;
}

} // namespace orvanta
