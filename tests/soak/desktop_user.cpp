// SPDX-License-Identifier: MIT
#include "soak/desktop_user.h"

#include "desktop/waiting.h"
#include "soak/failure.h"

#include <algorithm>
#include <chrono>

namespace orvanta::soak {
namespace {

constexpr int kBetweenLooksMs = 50;
/// In which a command that has been chosen is under way or already over.
constexpr std::chrono::milliseconds kReaction{300};
constexpr std::chrono::seconds kIconLimit{30};

} // namespace

QProcessEnvironment DesktopUser::prepare(const QString& home,
                                         const QProcessEnvironment& environment) {
    const QStringList missing = tests::DesktopSession::missingPrograms();
    require(missing.isEmpty(), missing.join(QLatin1Char('\n')));
    m_session = std::make_unique<tests::DesktopSession>(home, environment);
    require(m_session->startDisplay(), QStringLiteral("Xvfb did not come up"));
    require(m_session->startBus(), QStringLiteral("dbus-daemon did not come up"));
    m_bus = std::make_unique<tests::SessionBus>(m_session->busAddress());
    m_icon = std::make_unique<tests::TrayItem>(*m_bus);
    m_panel = std::make_unique<tests::Panel>(*m_session);
    require(m_panel->start(), QStringLiteral("the panel did not come up"));
    return m_session->environment();
}

void DesktopUser::watch(QProcess& tray) {
    m_tray = &tray;
    findIcon();
}

void DesktopUser::findIcon() {
    const auto pid = static_cast<pid_t>(m_tray->processId());
    require(tests::waitFor([&] { return m_icon->find(pid); }, kIconLimit),
            QStringLiteral("the panel does not have the icon"));
    m_menuPath = m_icon->menuPath();
    m_sinceLook.invalidate();
}

tests::TrayMenu DesktopUser::menu() const {
    return {*m_bus, m_icon->uniqueName(), m_menuPath};
}

void DesktopUser::look() {
    m_tray->readAllStandardOutput();
    if (m_icon->uniqueName().isEmpty() ||
        (m_sinceLook.isValid() && m_sinceLook.elapsed() < kBetweenLooksMs)) {
        return;
    }
    m_entries = menu().entries();
    m_sinceLook.start();
}

QString DesktopUser::said(const QString& heading) const {
    for (const tests::TrayMenu::Entry& entry : m_entries) {
        const QString text = entry.shownText();
        if (entry.isVisible && text.startsWith(heading)) {
            return text.mid(heading.size());
        }
    }
    return {};
}

bool DesktopUser::canChoose(const QString& entry) const {
    return std::any_of(m_entries.begin(), m_entries.end(), [&](const auto& candidate) {
        return candidate.isVisible && candidate.isEnabled && candidate.shownText() == entry;
    });
}

void DesktopUser::choose(const QString& entry) {
    const int id = menu().entry(entry).id;
    require(id != 0 && menu().choose(id), QStringLiteral("cannot choose ") + entry);
    tests::waitFor([] { return false; }, kReaction);
    m_entries.clear();
    m_sinceLook.invalidate();
}

void DesktopUser::disturb() {
    m_panel->kill();
    require(m_panel->start(), QStringLiteral("the panel did not come back"));
    findIcon();
}

QString DesktopUser::scene() const {
    QStringList shown;
    for (const tests::TrayMenu::Entry& entry : m_entries) {
        shown.append(entry.shownText());
    }
    return shown.join(QLatin1Char('\n'));
}

} // namespace orvanta::soak
