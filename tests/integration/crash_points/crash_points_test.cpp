// SPDX-License-Identifier: MIT
#include "integration/crash_points/crash_points_test.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <sys/statvfs.h>

namespace orvanta {
namespace {

constexpr int kErrors[] = {EIO, ENOSPC, EACCES};

/// Thousands of trees are made and removed, for which a disk takes minutes.
QString fastFolder() {
    const QString memory = QStringLiteral("/dev/shm");
    struct statvfs volume {};
    const bool isUsable = QFileInfo(memory).isWritable() && ::statvfs("/dev/shm", &volume) == 0 &&
                          (volume.f_flag & ST_NOEXEC) == 0;
    return isUsable ? memory : QDir::tempPath();
}

} // namespace

std::string traceOf(const Fault& fault, const SupervisedEnding& ending) {
    const auto index = static_cast<std::size_t>(fault.call);
    if (fault.kind == Fault::Kind::none || index > ending.calls.size()) {
        return "undisturbed";
    }
    static const char* const kTexts[] = {"",
                                         "killed at ",
                                         "killed alone at ",
                                         "failing at ",
                                         "failing from ",
                                         "failing at the path of "};
    std::string text = kTexts[static_cast<int>(fault.kind)] + std::to_string(fault.call) + ", " +
                       ending.calls[index - 1].description;
    if (fault.error != 0) {
        text += std::string(": ") + std::strerror(fault.error);
    }
    return text + (ending.report ? "; said: " + ending.report->message : "");
}

CrashPointsTest::CrashPointsTest()
    : m_folder(fastFolder() + QStringLiteral("/crash_points-XXXXXX")),
      m_scratch(fastFolder() + QStringLiteral("/crash_points_scratch-XXXXXX")),
      m_resourceRoot(m_folder.filePath(QStringLiteral("resources"))),
      m_stateRoot(m_folder.filePath(QStringLiteral("support/Orvanta"))),
      m_template(m_scratch.filePath(QStringLiteral("template"))),
      m_leftBehind(m_scratch.filePath(QStringLiteral("left_behind"))),
      m_leftByRecovery(m_scratch.filePath(QStringLiteral("left_by_recovery"))) {
    write(inStateRoot("config.json"), R"({"runtimeUpdates":{"checkOnStartup":false}})");
    write(m_folder.filePath(QStringLiteral("support/neighbour")), "Somebody else's");
}

QString CrashPointsTest::inStateRoot(const char* path) const {
    return m_stateRoot + u'/' + QLatin1String(path);
}

void CrashPointsTest::write(const QString& path, const QByteArray& bytes) const {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

void CrashPointsTest::ship(const char* version) {
    m_shipped = QLatin1String(version);
    makeRuntime(m_resourceRoot, m_shipped);
    write(m_resourceRoot + QStringLiteral("/local-server/runtime.json"),
          MacRuntimeMetadata{m_shipped, QStringLiteral("any"), QStringLiteral("any"), {}, {}, {}}
              .encode());
}

void CrashPointsTest::store(const char* version) {
    makeRuntime(inStateRoot("runtime/versions/") + QLatin1String(version), QLatin1String(version));
}

void CrashPointsTest::offer(const char* version, bool inFolder) {
    m_offered = QLatin1String(version);
    const QTemporaryDir archived;
    makeRuntime(inFolder ? archived.filePath(QStringLiteral("runtime")) : archived.path(),
                m_offered);
    m_archive = zipOf(archived.path());
}

MacRuntimeCurrentState CrashPointsTest::stateOf(const char* current, const char* previous) {
    MacRuntimeCurrentState state;
    state.currentVersion = QLatin1String(current);
    if (previous != nullptr) {
        state.previousVersion = QLatin1String(previous);
    }
    state.channel = QStringLiteral("beta");
    return state;
}

std::unique_ptr<StoreProcess> CrashPointsTest::start(int number) const {
    return std::make_unique<StoreProcess>(m_resourceRoot, m_stateRoot, number, m_offered,
                                          m_archive);
}

void CrashPointsTest::setStage(const StoreOperation& operation) {
    m_operation = operation;
    if (operation.before) {
        write(inStateRoot("runtime/current.json"), operation.before->encode());
    }
    copyTree(m_stateRoot, m_template);
    QDir(m_stateRoot).removeRecursively();
    m_outside = snapshotOf(m_folder.path());
}

void CrashPointsTest::restore(const QString& folder) const {
    QDir(m_stateRoot).removeRecursively();
    copyTree(folder, m_stateRoot);
}

std::optional<SupervisedEnding> CrashPointsTest::run(const Fault& fault, const Watch& watch) const {
    restore(m_template);
    return runSupervised([this] { return m_operation.run(*start(kThisStart)); }, fault, watch);
}

void CrashPointsTest::tryEveryPoint(const StoreOperation& operation) {
    setStage(operation);
    const auto undisturbed = run({});
    if (!undisturbed) {
        GTEST_SKIP() << "NOT RUN: system calls cannot be held up here.";
    }
    ASSERT_TRUE(undisturbed->report && undisturbed->report->succeeded)
        << (undisturbed->report ? undisturbed->report->message : "died");
    ASSERT_EQ(textOf(recorded()), textOf(operation.after));
    judge(*undisturbed, {});
    m_tally.calls = undisturbed->calls.size();
    ASSERT_GE(m_tally.calls, operation.fewestCalls);
    for (std::size_t call = 1; call <= m_tally.calls && !HasFailure(); ++call) {
        tryKills(static_cast<int>(call), undisturbed->calls[call - 1].byOtherProgram);
        tryFailures(static_cast<int>(call));
    }
    if (!HasFailure()) {
        tryReads();
    }
    report();
}

void CrashPointsTest::tryKills(int call, bool isByOtherProgram) {
    if (isByOtherProgram) {
        const Fault alone{Fault::Kind::killedAlone, call, 0};
        judge(run(alone).value(), alone);
        ++m_tally.killsAlone;
    }
    const Fault fault{Fault::Kind::killed, call, 0};
    judge(run(fault).value(), fault);
    m_leftByKill = m_left;
    ++m_tally.kills;
}

void CrashPointsTest::tryFailures(int call) {
    for (const int error : kErrors) {
        const Fault lasting{Fault::Kind::failingFromThenOn, call, error};
        judge(run(lasting).value(), lasting);
        // A process that can change nothing any more leaves what one leaves that is gone.
        EXPECT_EQ(m_left, m_leftByKill) << call;
        const Fault once{Fault::Kind::failing, call, error};
        judge(run(once).value(), once);
        m_tally.failures += 2;
    }
}

void CrashPointsTest::report() const {
    std::cout << m_operation.name << ": " << m_tally.calls << " points; " << m_tally.kills
              << " kills, " << m_tally.killsAlone << " that the archive tool outlived, "
              << m_tally.failures << " failures; " << m_tally.states
              << " different stores left behind; " << m_tally.secondKills
              << " kills of the next start (one call in " << kRecoveryStride << "), "
              << m_tally.statesOfRecovery << " different stores more; " << m_tally.reads
              << " reads (of the archive tool's, one in " << kToolStride << " is tried), "
              << m_tally.failuresToRead << " failures to read, " << m_tally.readsWithoutRecord
              << " with the record itself unreadable, " << m_tally.readsThatLostReplaced
              << " that lost the version replaced, " << m_tally.statesAfterReads
              << " different stores more\n";
}

void CrashPointsTest::judge(const SupervisedEnding& ending, const Fault& fault) {
    SCOPED_TRACE(traceOf(fault, ending));
    const bool isKill = fault.kind == Fault::Kind::killed || fault.kind == Fault::Kind::killedAlone;
    ASSERT_EQ(ending.wasKilled, isKill);
    ASSERT_EQ(ending.report.has_value(), !isKill);
    expectTrueReport(ending, fault);
    m_left = storeSnapshot();
    if (m_judged.insert(m_left).second) {
        ++m_tally.states;
        QDir(m_leftBehind).removeRecursively();
        copyTree(m_stateRoot, m_leftBehind);
        judgeStore();
        tryKillsOfRecovery();
    }
}

} // namespace orvanta
