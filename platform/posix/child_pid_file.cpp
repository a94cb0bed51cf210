// SPDX-License-Identifier: MIT
#include "platform/posix/child_pid_file.h"

#include "platform/posix/file_descriptor.h"

#include <QFile>
#include <QStringBuilder>

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace orvanta {
namespace {

const QByteArray kLaunching = "launching";
constexpr int kFields = 4;

QByteArray number(std::uint64_t value) {
    return QByteArray::number(static_cast<qulonglong>(value));
}

QByteArray encode(const ProcessIdentity& process) {
    return QByteArray::number(process.pid) + ' ' + number(process.startTime) + ' ' +
           number(process.device) + ' ' + number(process.inode) + '\n';
}

QByteArray encode(const std::vector<KnownChild>& children) {
    QByteArray bytes;
    for (const KnownChild& child : children) {
        if (auto process = identifyProcess(child.pid)) {
            if (!child.isSettled) {
                process->device = process->inode = 0;
            }
            bytes += encode(*process);
        }
    }
    return bytes;
}

bool isStillThere(const ProcessIdentity& process) {
    const auto now = identifyProcess(process.pid);
    return now && isSameProcess(*now, process);
}

QByteArray encode(const ChildProcessOptions& next) {
    struct stat executable {};
    ::stat(QFile::encodeName(next.executable).constData(), &executable);
    constexpr qsizetype kUsualBlock = 4096;
    QByteArray block;
    block.reserve(kUsualBlock);
    for (const auto& [name, value] : next.environment.all()) {
        block += name % '=' % value % '\0';
    }
    return kLaunching + ' ' + number(executable.st_dev) + ' ' + number(executable.st_ino) + ' ' +
           digestOfEnvironment(block) + '\n';
}

std::optional<ProcessIdentity> decodeChild(const QList<QByteArray>& fields) {
    bool areNumbers = true;
    const auto number = [&](int field) {
        bool isNumber = false;
        const qulonglong value = fields.at(field).toULongLong(&isNumber);
        areNumbers = areNumbers && isNumber;
        return value;
    };
    const ProcessIdentity process{fields.at(0).toInt(), number(1), number(2), number(3)};
    // Numbers below 2 would stand for groups of processes, or for the first one.
    return areNumbers && process.pid > 1 ? std::optional(process) : std::nullopt;
}

/// The lines of the file that have the right number of fields.
std::vector<QList<QByteArray>> readLines(const QByteArray& path) {
    constexpr qint64 kLongestFile = 65536;
    std::vector<QList<QByteArray>> lines;
    QFile file(QFile::decodeName(path));
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : file.read(kLongestFile).split('\n')) {
            if (line.count(' ') == kFields - 1) {
                lines.push_back(line.split(' '));
            }
        }
    }
    return lines;
}

bool writeFile(const QByteArray& path, const QByteArray& bytes) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW;
    const FileDescriptor file(::open(path.constData(), kFlags, 0600));
    return file.isOpen() && ::write(file.get(), bytes.constData(),
                                    static_cast<std::size_t>(bytes.size())) == bytes.size();
}

} // namespace

ChildPidFile::ChildPidFile(const QString& directory)
    : m_path(QFile::encodeName(directory) + "/orvanta-tray.children") {
    for (const QList<QByteArray>& fields : readLines(m_path)) {
        if (fields.at(0) == kLaunching) {
            m_launching = {fields.at(1).toULongLong(), fields.at(2).toULongLong(), fields.at(3)};
        } else if (const auto child = decodeChild(fields)) {
            m_leftovers.push_back(*child);
        }
    }
}

void ChildPidFile::terminateLeftovers() {
    auto leftovers = std::exchange(m_leftovers, {});
    if (const auto launching = std::exchange(m_launching, std::nullopt)) {
        const auto found = findProcesses(*launching);
        leftovers.insert(leftovers.end(), found.begin(), found.end());
    }
    for (const ProcessIdentity& process : leftovers) {
        terminateProcess(process);
        m_signalled.push_back(process);
    }
}

void ChildPidFile::remember(const std::vector<KnownChild>& children) {
    replaceFile(encode(children));
}

void ChildPidFile::remember(const std::vector<KnownChild>& children,
                            const ChildProcessOptions& next) {
    replaceFile(encode(children) + encode(next));
}

void ChildPidFile::replaceFile(QByteArray bytes) {
    std::erase_if(m_signalled,
                  [](const ProcessIdentity& process) { return !isStillThere(process); });
    for (const ProcessIdentity& process : m_signalled) {
        bytes += encode(process);
    }
    const QByteArray fresh = m_path + ".new";
    if (bytes.isEmpty()) {
        ::unlink(m_path.constData());
    } else if (writeFile(fresh, bytes)) {
        ::rename(fresh.constData(), m_path.constData());
    }
}

} // namespace orvanta
