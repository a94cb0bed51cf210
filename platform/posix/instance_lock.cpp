// SPDX-License-Identifier: MIT
#include "platform/posix/instance_lock.h"

#include "platform/posix/posix_error.h"
#include "platform/posix/run_time_directory.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <unistd.h>

namespace orvanta {
namespace {

FileDescriptor openLockFile(const QString& directory) {
    const QString path = directory + QStringLiteral("/orvanta-tray.lock");
    std::error_code ignored; // opening the file fails for the same reason and tells it
    std::filesystem::create_directories(QFile::encodeName(directory).toStdString(), ignored);
    FileDescriptor file(::open(QFile::encodeName(path).constData(),
                               O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    if (!file.isOpen()) {
        throw posixError(errno, QStringLiteral("The lock “%1” could not be opened").arg(path));
    }
    if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
        return file;
    }
    if (errno == EWOULDBLOCK) {
        return {};
    }
    throw posixError(errno, QStringLiteral("The lock “%1” could not be taken").arg(path));
}

} // namespace

QString instanceLockDirectory(const EnvironmentVariables& variables, const QString& stateRoot) {
    return sessionDirectory(variables).value_or(stateRoot);
}

InstanceLock::InstanceLock(const QString& directory) : m_file(openLockFile(directory)) {
    if (isHeld()) {
        writeProcessId();
    }
}

/// For people who look into the file; nobody decides by it.
void InstanceLock::writeProcessId() {
    const QByteArray line = QByteArray::number(static_cast<qint64>(::getpid())) + '\n';
    if (::ftruncate(m_file.get(), 0) == 0) {
        [[maybe_unused]] const ssize_t count =
            ::write(m_file.get(), line.constData(), static_cast<std::size_t>(line.size()));
    }
}

} // namespace orvanta
