// SPDX-License-Identifier: MIT
#include "integration/tray/resource_limit.h"
#include "integration/tray/small_installation.h"

#include <future>
#include <optional>

namespace orvanta::tests {
namespace {

/// A sanitizer needs descriptors itself: without any it cannot read memory and takes that for
/// damage.
constexpr char kNotUnderSanitizers[] = "NOT RUN: a sanitizer needs descriptors of its own.";

/// The tray with the shipped runtime, whatever it can read of its configuration.
class TrayExhaustion : public SmallInstallation {
protected:
    TrayExhaustion() {
        environment.insert(QStringLiteral("ORVANTA_RUNTIME_UPDATES_ENABLED"), QStringLiteral("0"));
    }

    void SetUp() override {
        if (ORVANTA_SANITIZED) {
            GTEST_SKIP() << kNotUnderSanitizers;
        }
        SmallInstallation::SetUp();
    }

    void startWithShippedRuntime() {
        startAndWaitForConnector();
        ASSERT_TRUE(waitForStatus(QStringLiteral("Not Paired")));
        ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Runtime updater disabled in config.json.")));
    }

    void takeDescriptors() {
        m_descriptors.emplace(trayPid(), RLIMIT_NOFILE, lowestFreeDescriptor(trayPid()));
    }
    void giveDescriptorsBack() { m_descriptors.reset(); }

    QString shippedNode() const { return resources() + QStringLiteral("/node-runtime/node"); }

private:
    std::optional<LoweredLimit> m_descriptors;
};

} // namespace

TEST_F(TrayExhaustion, WithoutDescriptorsTheConnectorIsShownOfflineUntilThereAreSome) {
    startWithShippedRuntime();
    takeDescriptors();
    ASSERT_TRUE(waitForStatus(QStringLiteral("Offline"))) << said();
    const long before = processorTimeMs(trayPid());
    pauseFor(2'000);
    const long spent = processorTimeMs(trayPid()) - before;
    RecordProperty("processor_time_ms", static_cast<int>(spent));
    EXPECT_LT(spent, 500) << "it does not wait, it turns";
    giveDescriptorsBack();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
    EXPECT_EQ(starts(), 1);
    EXPECT_TRUE(connector().answers());
}

TEST_F(TrayExhaustion, WithoutDescriptorsALaunchIsRefusedWithTheReasonAndRestartMakesUpForIt) {
    startWithShippedRuntime();
    const int first = connectorPid();
    const rlim_t fewest = lowestFreeDescriptor(trayPid());
    killConnector();
    {
        // Before the launch, a second after the exit.
        const LoweredLimit none(trayPid(), RLIMIT_NOFILE, fewest);
        ASSERT_TRUE(waitForLine(refusalOf(shippedNode(), "Too many open files"))) << said();
        EXPECT_TRUE(childrenOf(trayPid()).empty());
    }
    type(QStringLiteral("Restart"));
    EXPECT_TRUE(waitForNewConnector(first)) << said();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
}

TEST_F(TrayExhaustion, ARestartAskedForWithoutDescriptorsIsAnsweredWhenThereAreSome) {
    startWithShippedRuntime();
    const int first = connectorPid();
    const QString url = connector()
                            .get(QStringLiteral("/demo/environment"))
                            .value(QStringLiteral("ORVANTA_HOST_CONTROL_URL"))
                            .toString();
    takeDescriptors();
    auto reply = std::async(std::launch::async, [url] { return request("POST", url, {}, 20'000); });
    const long before = processorTimeMs(trayPid());
    EXPECT_EQ(reply.wait_for(std::chrono::seconds(2)), std::future_status::timeout);
    const long spent = processorTimeMs(trayPid()) - before;
    RecordProperty("processor_time_ms", static_cast<int>(spent));
    EXPECT_LT(spent, 500) << "it does not wait, it turns";
    giveDescriptorsBack();
    const auto answer = reply.get();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 202);
    EXPECT_TRUE(waitForNewConnector(first)) << said();
}

using TrayStoreExhaustion = SmallInstallation;

TEST_F(TrayStoreExhaustion, WithoutDescriptorsACheckFailsAndLeavesTheStoreAlone) {
    if (ORVANTA_SANITIZED) {
        GTEST_SKIP() << kNotUnderSanitizers;
    }
    startAndSettle();
    {
        const LoweredLimit none(trayPid(), RLIMIT_NOFILE, lowestFreeDescriptor(trayPid()));
        type(QStringLiteral("Check for Runtime Updates"));
        ASSERT_TRUE(waitUntil([this] {
            return runtimeLine().startsWith(
                       QStringLiteral("Runtime: Could not seed the runtime store: ")) &&
                   runtimeLine().endsWith(QStringLiteral(": Too many open files."));
        })) << said();
    }
    type(QStringLiteral("Check for Runtime Updates"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 1.1.0"))) << said();
    EXPECT_EQ(inState("currentVersion"), QStringLiteral("1.0.0"));
    EXPECT_EQ(starts(), 1);
}

} // namespace orvanta::tests
