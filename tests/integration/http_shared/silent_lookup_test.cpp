// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QProcess>

namespace orvanta {

constexpr int kNoNetwork = 77;

TEST(SilentLookup, HoldsUpNeitherTheEndOfAnExchangeNorThatOfTheProcess) {
    QElapsedTimer clock;
    clock.start();
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QStringLiteral(LOOKUP_PROGRAM), QStringList());
    ASSERT_TRUE(program.waitForFinished(60'000));
    ASSERT_EQ(program.exitStatus(), QProcess::NormalExit);
    if (program.exitCode() == kNoNetwork) {
        GTEST_SKIP() << "NOT RUN: this user may have no network of its own.";
    }
    ASSERT_EQ(program.exitCode(), 0);
    const QList<QByteArray> milliseconds = program.readAllStandardOutput().trimmed().split(' ');
    ASSERT_EQ(milliseconds.size(), 2);
    // The limit, without the exchange's first step, behind which the clock starts.
    EXPECT_GE(milliseconds[0].toInt(), 400);
    EXPECT_LT(milliseconds[0].toInt(), 3000);
    EXPECT_LT(milliseconds[1].toInt(), 1000);
    EXPECT_LT(clock.elapsed(), 5000);
}

} // namespace orvanta
