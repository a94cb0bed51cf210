// SPDX-License-Identifier: MIT
#include "platform/posix/run_time_directory.h"

#include "platform/environment.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {
namespace {

/// Two state roots are two applications, each with a record of its own.
QString privateName(const QString& stateRoot) {
    constexpr qsizetype kDigits = 16;
    const QByteArray digest =
        QCryptographicHash::hash(QFile::encodeName(stateRoot), QCryptographicHash::Sha256);
    return QStringLiteral("/orvanta-%1-%2")
        .arg(::geteuid())
        .arg(QLatin1StringView(digest.toHex().left(kDigits)));
}

/// Anybody may write beside it, so it might be somebody else's.
bool isOursAlone(const QByteArray& path) {
    struct stat status {};
    return ::lstat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

} // namespace

std::optional<QString> sessionDirectory(const EnvironmentVariables& variables) {
    const QString path =
        QFile::decodeName(variables.value("XDG_RUNTIME_DIR").value_or(QByteArray()));
    const bool isUsable = path.startsWith(u'/') && QFileInfo(path).isDir();
    return isUsable ? std::optional(path) : std::nullopt;
}

std::optional<QString> runTimeDirectory(const EnvironmentVariables& variables,
                                        const QString& stateRoot) {
    if (auto directory = sessionDirectory(variables)) {
        return directory;
    }
    const QString path = QDir::tempPath() + privateName(stateRoot);
    const QByteArray name = QFile::encodeName(path);
    ::mkdir(name.constData(), S_IRWXU);
    return isOursAlone(name) ? std::optional(path) : std::nullopt;
}

} // namespace orvanta
