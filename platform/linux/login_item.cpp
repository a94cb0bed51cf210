// SPDX-License-Identifier: MIT
#include "platform/linux/login_item.h"

#include "base/platform_error.h"
#include "platform/linux/autostart_command.h"
#include "platform/linux/autostart_entry.h"
#include "platform/linux/program_lookup.h"
#include "platform/posix/home_directory.h"
#include "platform/posix/posix_error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <filesystem>
#include <unistd.h>

namespace orvanta {
namespace {

constexpr char kDefaultSystemDirectory[] = "/etc/xdg";

QString entryIn(const QString& configuration) {
    return configuration + QStringLiteral("/autostart/com.orvanta.tray.desktop");
}

/// Also of a link that leads nowhere: it covers other entries all the same.
bool exists(const QString& path) {
    return QFileInfo(path).isSymLink() || QFileInfo::exists(path);
}

void createFolderOf(const QString& path) {
    const QString folder = QFileInfo(path).path();
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(folder).toStdString(), error);
    if (error) {
        throw posixError(error.value(),
                         QStringLiteral("The folder “%1” could not be created").arg(folder));
    }
}

void remove(const QString& path, const QString& failure) {
    if (::unlink(QFile::encodeName(path).constData()) != 0 && errno != ENOENT && errno != ENOTDIR) {
        throw posixError(errno, failure);
    }
}

void replaceFile(const QString& path, const QByteArray& text) {
    const QString failure = QStringLiteral("The file “%1” could not be written").arg(path);
    if (QFileInfo(path).isSymLink()) {
        // Where it leads is not ours to write to: /dev/null, in an entry that is masked.
        remove(path, failure);
    }
    QSaveFile file(path);
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
    if (!isWritten) {
        throw PlatformError(QStringLiteral("posix"), EIO,
                            QStringLiteral("%1: %2.").arg(failure, file.errorString()));
    }
}

void writeEntry(const QString& path, const QByteArray& text) {
    createFolderOf(path);
    replaceFile(path, text);
}

} // namespace

LinuxLoginItem::LinuxLoginItem(const Environment& environment, const QString& program)
    : m_environment(environment), m_program(program) {}

QString LinuxLoginItem::userEntry() const {
    const QString configuration = absolutePath(m_environment, "XDG_CONFIG_HOME");
    return entryIn(configuration.isEmpty()
                       ? homeDirectory(m_environment) + QStringLiteral("/.config")
                       : configuration);
}

QStringList LinuxLoginItem::systemEntries() const {
    QByteArray directories =
        m_environment.variables().value("XDG_CONFIG_DIRS").value_or(QByteArray());
    if (directories.isEmpty()) {
        directories = kDefaultSystemDirectory;
    }
    QStringList entries;
    for (const QByteArray& directory : directories.split(':')) {
        const QString entry = entryIn(QDir::cleanPath(QFile::decodeName(directory)));
        if (directory.startsWith('/') && exists(entry)) {
            entries.append(entry);
        }
    }
    return entries;
}

bool LinuxLoginItem::isEnabled() const {
    try {
        if (const QString entry = userEntry(); exists(entry)) {
            return startsTheProgram(entry);
        }
    } catch (const PlatformError&) {
        // No home directory, no entry there.
    }
    const QStringList entries = systemEntries();
    return !entries.isEmpty() && startsTheProgram(entries.first());
}

bool LinuxLoginItem::startsTheProgram(const QString& entry) const {
    QFile file(entry);
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const EnvironmentVariables& variables = m_environment.variables();
    const AutostartEntryFacts facts = readAutostartEntry(file.readAll());
    const QByteArray desktops = variables.value("XDG_CURRENT_DESKTOP").value_or(QByteArray());
    return !facts.isSwitchedOff && isMeantFor(facts, desktops.split(':')) &&
           (!facts.tryExec || findProgram(variables, *facts.tryExec)) &&
           runsProgram(facts.command, QFile::encodeName(m_program), variables);
}

void LinuxLoginItem::registerItem() {
    const QByteArray program = QFile::encodeName(m_program);
    if (!findProgram(m_environment.variables(), program)) {
        throw posixError(ENOENT,
                         QStringLiteral("The program “%1” could not be found").arg(m_program));
    }
    writeEntry(userEntry(), autostartEntry(program));
}

void LinuxLoginItem::unregisterItem() {
    const QString entry = userEntry();
    QStringList covered = systemEntries();
    covered.removeAll(entry);
    if (covered.isEmpty()) {
        remove(entry, QStringLiteral("The file “%1” could not be removed").arg(entry));
    } else {
        writeEntry(entry, switchedOffAutostartEntry(QFile::encodeName(m_program)));
    }
}

} // namespace orvanta
