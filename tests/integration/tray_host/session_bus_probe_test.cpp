// SPDX-License-Identifier: MIT
#include "platform/linux/session_bus_probe.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace orvanta {
namespace {

TEST(LocalSocketOf, TakesTheFirstAddress) {
    EXPECT_EQ(localSocketOf("unix:path=/run/user/1000/bus"), "/run/user/1000/bus");
    EXPECT_EQ(localSocketOf("unix:path=/a%20b/bus,guid=12;unix:path=/c"), "/a b/bus");
    EXPECT_EQ(localSocketOf("unix:guid=12,abstract=/tmp/x"), QByteArray("\0/tmp/x", 7));
}

TEST(LocalSocketOf, IsEmptyForOtherKinds) {
    for (const char* address :
         {"", "autolaunch:", "tcp:host=127.0.0.1,port=1", "unix:", "unix:dir=/tmp",
          "unixexec:path=/bin/x", "garbage", ";unix:path=/a"}) {
        EXPECT_EQ(localSocketOf(address), QByteArray()) << address;
    }
}

class SessionBusProbeTest : public ::testing::Test {
protected:
    ~SessionBusProbeTest() override {
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        qunsetenv("XDG_RUNTIME_DIR");
    }

    QString socketPath() const { return m_directory.filePath(QStringLiteral("bus")); }
    QByteArray address() const { return "unix:path=" + QFile::encodeName(socketPath()); }

    /// What the probe says, and after how long.
    bool isAlive() {
        std::optional<bool> answer;
        QElapsedTimer elapsed;
        elapsed.start();
        const SessionBusProbe probe([&](bool isAlive) { answer = isAlive; });
        EXPECT_FALSE(answer) << "answered within the call";
        while (!answer && elapsed.elapsed() < 20'000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        }
        m_took = elapsed.elapsed();
        EXPECT_TRUE(answer);
        return answer.value_or(false);
    }

    QTemporaryDir m_directory;
    qint64 m_took = 0;
};

TEST_F(SessionBusProbeTest, ARealBusSpeaks) {
    QProcess bus;
    bus.start(QStringLiteral("dbus-daemon"),
              {QStringLiteral("--session"), QStringLiteral("--nofork"),
               QStringLiteral("--print-address"), QStringLiteral("--address"),
               QString::fromUtf8(address())});
    ASSERT_TRUE(bus.waitForReadyRead(10'000)) << bus.readAllStandardError().toStdString();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address());
    EXPECT_TRUE(isAlive());
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_directory.path()));
    EXPECT_TRUE(isAlive());
    bus.kill();
    bus.waitForFinished();
    EXPECT_FALSE(isAlive());
    EXPECT_LT(m_took, 2'000);
}

TEST_F(SessionBusProbeTest, OneThatTakesConnectionsAndSaysNothingCountsAsDead) {
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    qstrncpy(name.sun_path, QFile::encodeName(socketPath()).constData(), sizeof name.sun_path);
    const FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(listener.get(), reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
    ASSERT_EQ(::listen(listener.get(), 1), 0);
    qputenv("DBUS_SESSION_BUS_ADDRESS", address());
    EXPECT_FALSE(isAlive());
    // Timers of seconds may be a twentieth early.
    EXPECT_GE(m_took, 4'700);
    EXPECT_LT(m_took, 8'000);
}

TEST_F(SessionBusProbeTest, WithoutAnAddressThereIsNone) {
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qunsetenv("XDG_RUNTIME_DIR");
    EXPECT_FALSE(isAlive());
}

TEST_F(SessionBusProbeTest, AnAddressOfAnotherKindIsLeftToTheToolkit) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "tcp:host=127.0.0.1,port=1");
    EXPECT_TRUE(isAlive());
}

} // namespace
} // namespace orvanta
