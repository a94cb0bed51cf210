// SPDX-License-Identifier: MIT
#pragma once

#include "integration/open_descriptors.h"
#include "platform/posix/child_process.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <chrono>
#include <optional>

namespace orvanta {

/// What one child has told so far.
struct ChildRecord {
    QByteArray output;
    qsizetype largestPiece = 0;
    std::vector<int> exits;

    bool hasExited() const { return !exits.empty(); }
    bool contains(const char* text) const { return output.contains(text); }
    bool hasLine(const QByteArray& line) const { return output.split('\n').contains(line); }
    /// From the probe's "pid" line.
    pid_t pid() const;
};

/// A launcher, and real children that it starts.
class LaunchingTest : public ::testing::Test {
protected:
    LaunchingTest();

    /// Options whose callbacks write to `record`, which must outlive the child.
    ChildProcessOptions optionsFor(ChildRecord& record, const QString& executable,
                                   const QStringList& arguments) const;
    std::shared_ptr<ChildProcess> launchProbe(ChildRecord& record, const QStringList& arguments);
    std::shared_ptr<ChildProcess> launchShell(ChildRecord& record, const QString& script);

    QString filePath(const QString& name) const { return m_directory.filePath(name); }

    std::optional<PosixChildProcessLauncher> m_launcher;
    QTemporaryDir m_directory;
};

constexpr std::chrono::seconds kLongEnough{20};

/// Runs the main loop until `condition` holds; false when that takes longer than `limit`.
bool runLoopUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds limit = kLongEnough);
void runLoopFor(std::chrono::milliseconds duration);

/// Children of this process, running or waiting to be reaped.
bool haveChildren();

/// Runs nothing of the loop; for what other processes do. False after 20 seconds.
bool waitWithoutLoop(const std::function<bool()>& condition);

} // namespace orvanta
