// SPDX-License-Identifier: MIT
#include "desktop/desktop_test.h"

#include <QDir>

#include <algorithm>

namespace orvanta::tests {
namespace {

/// Away from everything, so that nothing is highlighted by chance.
constexpr QPoint kNowhere(900, 700);

/// What the check at the start ends with.
const QString kSettledRuntimeLine =
    QStringLiteral("Runtime: Runtime updater disabled in config.json.");

/// To look for leaks among all that the toolkit has loaded for a desktop takes a tray longer than
/// its end may take. In a terminal, where it loads less, it looks for them.
QProcessEnvironment withoutSearchForLeaks(QProcessEnvironment environment) {
    const auto name = QStringLiteral("ASAN_OPTIONS");
    environment.insert(name, environment.value(name) + QStringLiteral(":detect_leaks=0"));
    return environment;
}

} // namespace

DesktopTest::DesktopTest() : session(home.path(), withoutSearchForLeaks(environment)) {}

void DesktopTest::SetUp() {
    const QStringList missing = DesktopSession::missingPrograms();
    ASSERT_TRUE(missing.isEmpty()) << missing.join(QLatin1Char('\n')).toStdString();
    ASSERT_TRUE(session.startDisplay()) << "Xvfb did not come up";
    ASSERT_TRUE(session.startBus()) << "dbus-daemon did not come up";
    environment = session.environment();
    connectToBus();
    screen = std::make_unique<Screen>(session.displayName());
    person = std::make_unique<Person>(session.environment());
    panel = std::make_unique<Panel>(session);
    ASSERT_TRUE(person->pointAt(kNowhere));
}

void DesktopTest::TearDown() {
    if (tray.state() != QProcess::NotRunning) {
        tray.terminate();
        if (waitForExit() != 0) {
            tray.kill();
            tray.waitForFinished();
        }
    }
    panel.reset();
    EXPECT_TRUE(session.stop());
}

void DesktopTest::connectToBus() {
    item.reset();
    bus = std::make_unique<SessionBus>(session.busAddress());
    item = std::make_unique<TrayItem>(*bus);
}

void DesktopTest::startEverything() {
    ASSERT_TRUE(panel->start()) << scene();
    startTrayAsIcon();
    ASSERT_TRUE(waitForItem()) << scene();
    ASSERT_TRUE(waitFor([this] { return connectorPort() > 0 && connector().answers(); }))
        << scene();
}

void DesktopTest::startAndSettle() {
    startEverything();
    ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Not Paired"))) << scene();
    ASSERT_TRUE(waitForToolTip(QStringLiteral("Orvanta Not Paired"))) << scene();
    ASSERT_TRUE(waitForEntry(kSettledRuntimeLine)) << scene();
}

bool DesktopTest::waitForItem() {
    return waitFor([this] { return item->find(trayPid()); });
}

TrayMenu DesktopTest::menu() const {
    return TrayMenu(*bus, item->uniqueName(), item->menuPath());
}

QStringList DesktopTest::shownTexts() const {
    QStringList shown;
    for (const TrayMenu::Entry& entry : menu().entries()) {
        if (entry.isVisible) {
            shown.append(entry.isSeparator ? QStringLiteral("-") : entry.shownText());
        }
    }
    return shown;
}

bool DesktopTest::waitForToolTip(const QString& title) {
    return waitFor([&] { return item->toolTipTitle() == title; });
}

bool DesktopTest::waitForEntry(const QString& text) {
    return waitFor([&] { return shownTexts().contains(text); });
}

bool DesktopTest::choose(const QString& text) const {
    const TrayMenu::Entry entry = menu().entry(text);
    return entry.id != 0 && menu().choose(entry.id);
}

std::optional<QRect> DesktopTest::openMenu(Person::Button button) {
    QImage before;
    const bool isOpen = waitFor([this] { return !iconArea().isEmpty(); }) &&
                        person->click(button, iconArea().center()) && waitFor([&] {
                            const QImage now = screen->picture();
                            const bool standsStill = isMenuOpen() && now == before;
                            before = now;
                            return standsStill;
                        });
    return isOpen ? std::optional(screen->menus().first()) : std::nullopt;
}

void DesktopTest::keepPicture(const QString& name, const QRect& part) const {
    const QString directory = qEnvironmentVariable("ORVANTA_PICTURES");
    if (!directory.isEmpty()) {
        EXPECT_TRUE(QDir().mkpath(directory));
        EXPECT_TRUE(screen->picture().copy(part).save(directory + QLatin1Char('/') + name +
                                                      QStringLiteral(".png")));
    }
}

int DesktopTest::requests(const QString& request) const {
    const QList<QJsonObject> all = journal(QStringLiteral("request"));
    return static_cast<int>(std::count_if(all.begin(), all.end(), [&](const QJsonObject& entry) {
        return entry.value(QStringLiteral("request")).toString() == request;
    }));
}

QByteArray DesktopTest::trayErrors() {
    m_errors += tray.readAllStandardError();
    return m_errors;
}

std::string DesktopTest::scene() {
    const QString text =
        QStringLiteral("tray %1, panel takes icons: %2, items: %3\ntool tip: %4\nmenu:\n  %5\n"
                       "icon at x=%6 width=%7, open menus: %8\ntray said:\n%9")
            .arg(tray.state() == QProcess::NotRunning ? QStringLiteral("has ended")
                                                      : QStringLiteral("runs"))
            .arg(panel->takesIcons())
            .arg(item->registeredCount())
            .arg(item->toolTipTitle(), shownTexts().join(QStringLiteral("\n  ")))
            .arg(iconArea().x())
            .arg(iconArea().width())
            .arg(screen->menus().size())
            .arg(QString::fromUtf8(trayErrors()));
    return text.toStdString();
}

} // namespace orvanta::tests
