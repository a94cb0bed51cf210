// SPDX-License-Identifier: MIT
#include "integration/tray/tray_process.h"

#include <QFile>
#include <QStandardPaths>

#include <csignal>

namespace orvanta::tests {
namespace {

/// A compositor that draws nowhere, without a panel.
class TrayOnWayland : public TrayTest {
protected:
    void SetUp() override {
        ASSERT_FALSE(QStandardPaths::findExecutable(QStringLiteral("weston")).isEmpty())
            << "weston is missing; on Debian it is in weston.";
        QFile::setPermissions(home.filePath(QStringLiteral("run")),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_compositor.setProcessEnvironment(environment);
        m_compositor.start(QStringLiteral("weston"),
                           {QStringLiteral("--backend=headless-backend.so"),
                            QStringLiteral("--socket=wayland-test"),
                            QStringLiteral("--idle-time=0")});
        const QString socket = home.filePath(QStringLiteral("run/wayland-test"));
        ASSERT_TRUE(waitUntil([&] { return QFile::exists(socket); }))
            << m_compositor.readAllStandardError().toStdString();
        environment.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-test"));
    }

    ~TrayOnWayland() override { endCompositor(SIGKILL); }

    void endCompositor(int signal) {
        if (m_compositor.state() != QProcess::NotRunning) {
            ::kill(static_cast<pid_t>(m_compositor.processId()), signal);
            m_compositor.waitForFinished(5'000);
        }
    }

private:
    QProcess m_compositor;
};

class EndOfCompositor : public TrayOnWayland, public ::testing::WithParamInterface<int> {};

/// The toolkit ends the process then, without asking anybody.
TEST_P(EndOfCompositor, EndsTheConnectorToo) {
    startTray({});
    ASSERT_TRUE(waitUntil([this] { return connectorPort() > 0 && connector().answers(); }));
    const pid_t child = connectorPid();
    const pid_t pid = trayPid();
    endCompositor(GetParam());
    EXPECT_TRUE(waitUntil([pid] { return !isAlive(pid); }));
    EXPECT_TRUE(waitUntil([child] { return !isAlive(child); }));
    EXPECT_EQ(starts(), 1);
}

INSTANTIATE_TEST_SUITE_P(Signals, EndOfCompositor, ::testing::Values(SIGTERM, SIGKILL));

} // namespace
} // namespace orvanta::tests
