// SPDX-License-Identifier: MIT
#include "platform/posix/process_identity.h"

#include "platform/posix/file_descriptor.h"

#include <QDir>
#include <QFile>

#include <csignal>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orvanta {
namespace {

QByteArray pathOf(pid_t pid, const char* name) {
    return "/proc/" + QByteArray::number(pid) + '/' + name;
}

/// As it was at the start; empty for a process of somebody else's.
QByteArray environmentOf(pid_t pid) {
    QFile file(QFile::decodeName(pathOf(pid, "environ")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Clock ticks from the start of the system. The name of the program, in parentheses before it,
/// may hold anything, parentheses too.
std::optional<std::uint64_t> startTimeOf(pid_t pid) {
    constexpr qsizetype kFieldAfterName = 20;
    QFile file(QFile::decodeName(pathOf(pid, "stat")));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray line = file.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 1).split(' ');
    bool isNumber = false;
    const std::uint64_t time = fields.value(kFieldAfterName).toULongLong(&isNumber);
    return isNumber ? std::optional(time) : std::nullopt;
}

} // namespace

std::optional<ProcessIdentity> identifyProcess(pid_t pid) {
    const auto startTime = startTimeOf(pid);
    struct stat executable {};
    // Leads to the file itself, though that may have been renamed or removed meanwhile. A process
    // that has exited has none.
    if (!startTime || ::stat(pathOf(pid, "exe").constData(), &executable) != 0) {
        return std::nullopt;
    }
    return ProcessIdentity{pid, *startTime, executable.st_dev, executable.st_ino};
}

std::vector<ProcessIdentity> findProcesses(const ExpectedProcess& expected) {
    std::vector<ProcessIdentity> found;
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const auto process = identifyProcess(name.toInt());
        if (process && process->device == expected.device && process->inode == expected.inode &&
            digestOfEnvironment(environmentOf(process->pid)) == expected.environmentDigest) {
            found.push_back(*process);
        }
    }
    return found;
}

void terminateProcess(const ProcessIdentity& process) {
    // Taken before the look: should the number change hands in between, the signal goes nowhere.
    const FileDescriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process.pid, 0)));
    const auto now = handle.isOpen() ? identifyProcess(process.pid) : std::nullopt;
    if (now && isSameProcess(*now, process)) {
        ::syscall(SYS_pidfd_send_signal, handle.get(), SIGTERM, nullptr, 0);
    }
}

} // namespace orvanta
