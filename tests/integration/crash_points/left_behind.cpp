// SPDX-License-Identifier: MIT
// What a process that came to its end somewhere leaves behind, and what the next makes of it.
#include "integration/crash_points/crash_points_test.h"

#include "base/platform_error.h"
#include "runtime/runtime_layout.h"

#include <QDir>
#include <QFile>

namespace orvanta {
namespace {

std::set<std::string> namesIn(const QString& folder) {
    std::set<std::string> names;
    for (const QString& name :
         QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
        names.insert(name.toStdString());
    }
    return names;
}

} // namespace

std::string textOf(const std::optional<MacRuntimeCurrentState>& state) {
    return state ? state->encode().toStdString() : "(none)";
}

void CrashPointsTest::judgeStore() {
    expectOldOrNew(recorded());
    expectWholeVersions();
    expectFreshStart(kNextStart);
    expectOldOrNew(recorded());
    expectSecondTry();
    storeSnapshot();
}

Snapshot CrashPointsTest::storeSnapshot() const {
    Snapshot inside = snapshotOf(m_stateRoot);
    Snapshot outside = snapshotOf(m_folder.path());
    const std::string top = m_stateRoot.mid(m_folder.path().size()).toStdString();
    std::erase_if(outside, [&](const auto& item) { return item.first.starts_with(top); });
    EXPECT_EQ(outside, m_outside);
    return inside;
}

std::optional<MacRuntimeCurrentState> CrashPointsTest::recorded() const {
    QFile file(inStateRoot("runtime/current.json"));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray bytes = file.readAll();
    try {
        return MacRuntimeCurrentState::decode(bytes);
    } catch (const PlatformError&) {
        ADD_FAILURE() << "The record does not decode: " << bytes.constData();
        return stateOf("(none that decodes)");
    }
}

void CrashPointsTest::expectOldOrNew(const std::optional<MacRuntimeCurrentState>& state) const {
    EXPECT_TRUE(state == m_operation.before || state == m_operation.after) << textOf(state);
}

/// What fails before the switch leaves the old state; what does not fail has switched, unless it
/// was the record itself that could not be written.
void CrashPointsTest::expectTrueReport(const SupervisedEnding& ending, const Fault& fault) const {
    if (!ending.report) {
        return;
    }
    if (!ending.report->succeeded) {
        EXPECT_EQ(textOf(recorded()), textOf(m_operation.before));
        return;
    }
    bool isRecordAtFault = false;
    for (std::size_t call = 1; call <= ending.calls.size(); ++call) {
        const auto first = static_cast<std::size_t>(fault.call);
        const bool isFault = fault.kind == Fault::Kind::failing ? call == first : call >= first;
        isRecordAtFault |=
            isFault && ending.calls[call - 1].description.find("current.json") != std::string::npos;
    }
    if (fault.kind == Fault::Kind::none || !isRecordAtFault) {
        EXPECT_EQ(textOf(recorded()), textOf(m_operation.after));
    }
}

/// Those that the record names are there, and none counts as complete that is not.
void CrashPointsTest::expectWholeVersions() const {
    const QString versions = inStateRoot("runtime/versions/");
    const auto state = recorded();
    for (const auto& version : {state ? std::optional(state->currentVersion) : std::nullopt,
                                state ? state->previousVersion : std::nullopt}) {
        if (version && (version != m_operation.replaced || state == m_operation.after)) {
            EXPECT_TRUE(isWhole(versions + *version, *version)) << version->toStdString();
        }
    }
    const PosixFileManager files;
    for (const std::string& name : namesIn(versions)) {
        const QString version = QString::fromStdString(name);
        if (isValidRuntimeRoot(files, versions + version)) {
            EXPECT_TRUE(isWhole(versions + version, version)) << name << " only looks complete";
        }
    }
}

void CrashPointsTest::expectFreshStart(int number) const {
    std::optional<MacRuntimeLaunchConfiguration> launch;
    const Report report = start(number)->resolve(&launch);
    ASSERT_TRUE(report.succeeded && launch) << report.message;
    const QString root = launch->localServerRoot.chopped(qstrlen("/local-server"));
    ASSERT_EQ(launch->nodeBinaryURL, root + QStringLiteral("/node-runtime/node"));
    const auto state = recorded();
    ASSERT_TRUE(state);
    const QString version = launch->isLegacy ? m_shipped : state->currentVersion;
    EXPECT_TRUE(isWhole(root, version)) << version.toStdString();
    EXPECT_EQ(outputOf(launch->nodeBinaryURL, launch->localServerRoot), expectedOutput(version));
    if (launch->isLegacy) {
        EXPECT_EQ(state->currentVersion, m_operation.replaced);
    } else {
        EXPECT_EQ(launch->version, version);
    }
}

/// The cause is gone: the operation, asked for again if it has not come about, ends as it would
/// have.
void CrashPointsTest::expectSecondTry() const {
    const bool isOver = recorded() == m_operation.after &&
                        namesIn(inStateRoot("runtime/versions")) == m_operation.versionsAfter;
    if (!isOver) {
        const Report report = m_operation.run(*start(kSecondTry));
        EXPECT_TRUE(report.succeeded) << report.message;
    }
    EXPECT_EQ(textOf(recorded()), textOf(m_operation.after));
    EXPECT_EQ(namesIn(inStateRoot("runtime/versions")), m_operation.versionsAfter);
    expectWholeVersions();
    expectFreshStart(kNextStart);
}

} // namespace orvanta
