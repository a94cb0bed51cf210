// SPDX-License-Identifier: MIT
#include "desktop/marked_processes.h"

#include "desktop/waiting.h"
#include "integration/tray/process_table.h"

#include <QDir>
#include <QFile>

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvanta::tests {
namespace {

bool hasVariable(pid_t pid, const QByteArray& variable) {
    QFile file(QStringLiteral("/proc/%1/environ").arg(pid));
    return file.open(QIODevice::ReadOnly) && file.readAll().split('\0').contains(variable);
}

} // namespace

void adoptOrphans() {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
}

std::vector<pid_t> processesWith(const QByteArray& variable) {
    std::vector<pid_t> found;
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const pid_t pid = name.toInt();
        if (pid > 0 && pid != ::getpid() && isAlive(pid) && hasVariable(pid, variable)) {
            found.push_back(pid);
        }
    }
    return found;
}

bool endProcessesWith(const QByteArray& variable) {
    return waitFor([&variable] {
        const std::vector<pid_t> found = processesWith(variable);
        for (const pid_t pid : found) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        return found.empty();
    });
}

} // namespace orvanta::tests
