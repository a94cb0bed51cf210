// SPDX-License-Identifier: MIT
#include "platform/linux/login_item.h"

#include "base/platform_error.h"
#include "platform/linux/autostart_entry.h"
#include "platform/posix/home_directory.h"
#include "platform/posix/posix_error.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <filesystem>
#include <unistd.h>

namespace orvanta {
namespace {

/// A bare name is searched for on the PATH of the session, which is not known here.
bool canBeRun(const std::optional<QByteArray>& program) {
    return !program || !program->startsWith('/') || ::access(program->constData(), X_OK) == 0;
}

void createDirectory(const QString& path) {
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(path).toStdString(), error);
    if (error) {
        throw posixError(error.value(),
                         QStringLiteral("The folder “%1” could not be created").arg(path));
    }
}

void replaceFile(const QString& path, const QByteArray& text) {
    QSaveFile file(path);
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
    if (!isWritten) {
        throw PlatformError(QStringLiteral("posix"), EIO,
                            QStringLiteral("The file “%1” could not be written: %2.")
                                .arg(path, file.errorString()));
    }
}

} // namespace

LinuxLoginItem::LinuxLoginItem(const Environment& environment, const QString& program)
    : m_environment(environment), m_program(program) {}

QString LinuxLoginItem::directory() const {
    const QString configuration = absolutePath(m_environment, "XDG_CONFIG_HOME");
    return (configuration.isEmpty() ? homeDirectory(m_environment) + QStringLiteral("/.config")
                                    : configuration) +
           QStringLiteral("/autostart");
}

QString LinuxLoginItem::path() const {
    return directory() + QStringLiteral("/com.orvanta.tray.desktop");
}

bool LinuxLoginItem::isEnabled() const {
    try {
        QFile file(path());
        if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
            return false;
        }
        const AutostartEntryFacts facts = readAutostartEntry(file.readAll());
        return !facts.isSwitchedOff && canBeRun(facts.tryExec);
    } catch (const PlatformError&) {
        return false; // no home directory, no entry
    }
}

void LinuxLoginItem::registerItem() {
    createDirectory(directory());
    replaceFile(path(), autostartEntry(QFile::encodeName(m_program)));
}

void LinuxLoginItem::unregisterItem() {
    if (::unlink(QFile::encodeName(path()).constData()) != 0 && errno != ENOENT &&
        errno != ENOTDIR) {
        throw posixError(errno, QStringLiteral("The file “%1” could not be removed").arg(path()));
    }
}

} // namespace orvanta
