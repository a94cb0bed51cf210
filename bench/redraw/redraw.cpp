// SPDX-License-Identifier: MIT
// redraw CHANGED REDRAWS: shows an icon with the tray's menu and redraws it REDRAWS times, each
// time with other texts for CHANGED of its entries (at most the 13 that are no separators). Prints
// "begin" and "end MS", the processor time of all threads for one redraw.

#include "app/desktop_application.h"
#include "app/menu_entries.h"
#include "app/system_tray_icon.h"
#include "platform/posix/desktop_services.h"
#include "platform/tray_host.h"

#include <QCoreApplication>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <vector>

namespace {

using namespace std::chrono_literals;
using orvanta::MenuEntry;

constexpr auto kUntilShown = 1s;
constexpr auto kPause = 10ms;
constexpr auto kUntilAsked = 2s;
constexpr double kNsPerMs = 1e6;

double processorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / kNsPerMs;
}

class Redraws {
public:
    Redraws(int changed, int redraws)
        : m_changed(changed), m_redraws(redraws), m_host(orvanta::makeTrayHost()) {
        m_host->watch([this](orvanta::TrayHost::Event event) {
            if (event == orvanta::TrayHost::Event::appeared) {
                m_icon.emplace(*m_host, [](orvanta::MenuEntryId) {});
                m_icon->show(orvanta::ConnectorMenuState::online, m_entries);
                QTimer::singleShot(kUntilShown, &m_timer, [this] { begin(); });
            }
        });
    }

private:
    void begin() {
        say("begin\n");
        m_before = processorTime();
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { redraw(); });
        m_timer.start(kPause);
    }

    void redraw() {
        if (m_done == m_redraws) {
            return end();
        }
        ++m_done;
        int left = m_changed;
        for (MenuEntry& entry : m_entries) {
            if (left > 0 && entry.kind != orvanta::MenuEntryKind::separator) {
                entry.text = QStringLiteral("Entry that says %1").arg(m_done);
                --left;
            }
        }
        m_icon->show(orvanta::ConnectorMenuState::online, m_entries);
    }

    /// Stays for a while, so that it can still be asked who it is on the bus.
    void end() {
        m_timer.stop();
        std::printf("end %f\n", (processorTime() - m_before) / m_redraws);
        std::fflush(stdout);
        QTimer::singleShot(kUntilAsked, &m_timer, [] { QCoreApplication::quit(); });
    }

    static void say(const char* line) {
        std::fputs(line, stdout);
        std::fflush(stdout);
    }

    const int m_changed;
    const int m_redraws;
    int m_done = 0;
    double m_before = 0;
    std::vector<MenuEntry> m_entries =
        orvanta::menuEntries({.menuState = orvanta::ConnectorMenuState::online,
                              .statusText = QStringLiteral("Online"),
                              .workspaceId = QStringLiteral("workspace"),
                              .lastError = QStringLiteral("error"),
                              .runtimeUpdateStatusText = QStringLiteral("Runtime")});
    std::unique_ptr<orvanta::TrayHost> m_host;
    std::optional<orvanta::SystemTrayIcon> m_icon;
    QTimer m_timer;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: redraw CHANGED REDRAWS\n", stderr);
        return 2;
    }
    int count = argc;
    const auto application = orvanta::makeDesktopApplication(count, argv, 1);
    const Redraws redraws(std::atoi(argv[1]), std::atoi(argv[2]));
    return QCoreApplication::exec();
}
