// SPDX-License-Identifier: MIT
#include "integration/tray/small_installation.h"

#include <QDateTime>
#include <QElapsedTimer>

#include <cstdlib>

namespace orvanta::tests {
namespace {

constexpr qint64 kDay = 24 * 3600;

class TrayClock : public SmallInstallation, public ::testing::WithParamInterface<qint64> {
protected:
    void SetUp() override {
        if (ORVANTA_SANITIZED) {
            GTEST_SKIP() << "NOT RUN: a sanitizer wants to be loaded before the library that "
                            "shifts the clock";
        }
        SmallInstallation::SetUp();
        setClock(0);
        environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(ORVANTA_STEPPED_CLOCK));
        environment.insert(QStringLiteral("ORVANTA_CLOCK_OFFSET"), offsetFile());
    }

    QString offsetFile() const { return home.filePath(QStringLiteral("clock-offset")); }
    void setClock(qint64 offsetSeconds) const {
        const QString fresh = offsetFile() + QStringLiteral(".new");
        QFile file(fresh);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::number(offsetSeconds));
        file.close();
        ASSERT_EQ(::rename(QFile::encodeName(fresh).constData(),
                           QFile::encodeName(offsetFile()).constData()),
                  0);
    }
    /// By how much the tray's last confirmation is away from the real time.
    qint64 stampOffset() const {
        const auto stamp = QDateTime::fromString(inState("lastHealthyAt"), Qt::ISODate);
        return stamp.isValid() ? QDateTime::currentDateTimeUtc().secsTo(stamp) : 0;
    }
    int polls() const {
        int count = 0;
        for (const QJsonObject& entry : journal(QStringLiteral("request"))) {
            count += entry.value(QStringLiteral("request")) == QStringLiteral("GET /api/ov/status");
        }
        return count;
    }
};

} // namespace

TEST_P(TrayClock, AStepOfTheClockHoldsNothingUp) {
    startAndSettle();
    setClock(GetParam());
    const int before = polls();
    QElapsedTimer elapsed;
    elapsed.start();
    ASSERT_TRUE(waitUntil([&] { return polls() >= before + 15; }));
    EXPECT_GE(elapsed.elapsed(), 2'500) << "polls came too soon";
    EXPECT_LT(elapsed.elapsed(), 8'000) << "polls came too late";
    EXPECT_NEAR(static_cast<double>(stampOffset()), static_cast<double>(GetParam()), 60.0)
        << "the clock was not seen to step";

    const int first = connectorPid();
    killConnector();
    EXPECT_TRUE(waitForNewConnector(first, 8'000)) << said();
    setClock(0);
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
    type(QStringLiteral("Update Desktop Connector"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0"))) << said();
}

INSTANTIATE_TEST_SUITE_P(Seconds, TrayClock, ::testing::Values(-kDay, -3600, kDay));

} // namespace orvanta::tests
