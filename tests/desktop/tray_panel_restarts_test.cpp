// SPDX-License-Identifier: MIT
#include "desktop/desktop_test.h"
#include "desktop/from_environment.h"
#include "desktop/lonely_watcher.h"

#include <QElapsedTimer>

#include <array>
#include <functional>
#include <random>

namespace orvanta::tests {
namespace {

using std::chrono::milliseconds;

/// Panels come and go; ORVANTA_DESKTOP_RESTARTS says how often.
class TrayAndPanelRestarts : public DesktopTest {
protected:
    void letPass(milliseconds span) {
        holdsFor([] { return true; }, span);
    }
    milliseconds aWhile() { return milliseconds(m_random() % 1'500); }

    void stopPanel() {
        panel->kill();
        ASSERT_TRUE(waitFor([this] { return !panel->takesIcons(); })) << scene();
    }
    void startPanel() { ASSERT_TRUE(panel->start()) << scene(); }

    void restartAtOnce() {
        panel->kill();
        startPanel();
    }
    void comeLate() {
        stopPanel();
        letPass(aWhile());
        startPanel();
    }
    /// The icon is announced to a watcher that nobody asks for icons, and then to the panel's.
    void comeLateToAWatcher() {
        stopPanel();
        {
            const LonelyWatcher watcher(session.busAddress());
            ASSERT_TRUE(watcher.isTheWatcher());
            ASSERT_TRUE(waitFor([&] { return watcher.items() > 0; })) << scene();
            letPass(aWhile());
        }
        startPanel();
    }
    /// A new tray meets a watcher without a panel, as at a log-in.
    void comeLateToANewTray() {
        stopPanel();
        tray.terminate();
        ASSERT_EQ(waitForExit(), 0);
        {
            const LonelyWatcher watcher(session.busAddress());
            ASSERT_TRUE(watcher.isTheWatcher());
            startTrayAsIcon();
            ASSERT_TRUE(waitFor([&] { return watcher.questions() > 0; })) << scene();
            letPass(aWhile());
        }
        startPanel();
    }
    void restartWithTheBus() {
        session.killBus();
        panel->kill();
        letPass(aWhile());
        ASSERT_TRUE(session.startBus());
        connectToBus();
        startPanel();
    }

    void expectTheIcon() {
        ASSERT_TRUE(waitForItem()) << scene();
        ASSERT_TRUE(waitFor([this] { return !iconArea().isEmpty(); })) << scene();
        ASSERT_TRUE(waitForToolTip(QStringLiteral("Orvanta Not Paired"))) << scene();
        ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Not Paired"))) << scene();
        ASSERT_EQ(item->registeredCount(), 1);
    }

private:
    std::mt19937 m_random{20261121};
};

} // namespace

TEST_F(TrayAndPanelRestarts, TheIconIsThereEachTime) {
    using Restart = std::function<void()>;
    const std::array<Restart, 5> kinds{
        [this] { restartAtOnce(); }, [this] { comeLate(); }, [this] { comeLateToAWatcher(); },
        [this] { comeLateToANewTray(); }, [this] { restartWithTheBus(); }};
    const int restarts = fromEnvironment("ORVANTA_DESKTOP_RESTARTS", 10);
    startAndSettle();
    qint64 longest = 0;
    for (int i = 0; i < restarts; ++i) {
        SCOPED_TRACE("restart " + std::to_string(i));
        kinds[static_cast<std::size_t>(i) % kinds.size()]();
        QElapsedTimer elapsed;
        elapsed.start();
        if (!HasFatalFailure()) {
            expectTheIcon();
        }
        ASSERT_FALSE(HasFatalFailure());
        longest = std::max(longest, elapsed.elapsed());
    }
    RecordProperty("restarts", restarts);
    RecordProperty("longest_wait_for_the_icon_ms", static_cast<int>(longest));
}

} // namespace orvanta::tests
