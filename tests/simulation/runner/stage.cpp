// SPDX-License-Identifier: MIT
#include "simulation/runner/stage.h"

namespace orvanta::simulation {

Stage::Stage(bool isTalking) {
    m_model.isTalking = isTalking;
}

Stage::~Stage() {
    endTray();
}

Connector* Stage::newest() const {
    const auto& living = m_world.connectors.living();
    return living.empty() ? nullptr : living.back().get();
}

void Stage::perform(const Event& event) {
    const auto condition = static_cast<Condition>(event.what);
    m_model.note("* " + written(event));
    switch (event.kind) {
    case EventKind::startTray:
        return startTray();
    case EventKind::quit:
        return quit(event.value * kMillisecond);
    case EventKind::kill:
        return endTray();
    case EventKind::click:
        return click(static_cast<MenuEntryId>(event.what));
    case EventKind::clickAll:
        return clickAll();
    case EventKind::set:
        return m_world.set(condition, event.value);
    case EventKind::turn:
        return m_world.turn(condition, event.value);
    case EventKind::crash:
        for (const auto living = m_world.connectors.living(); const auto& connector : living) {
            connector->exit(static_cast<int>(event.value));
        }
        return;
    case EventKind::speak:
        return newest() != nullptr ? newest()->speak(event.value) : void();
    case EventKind::move:
        return newest() != nullptr ? newest()->move() : void();
    case EventKind::askHost:
        return m_world.connectors.askHost(
            m_world.hosts.nextPort.value_or(0),
            kHostRequests.at(static_cast<std::size_t>(event.what)).bytes);
    case EventKind::stranger:
        return m_world.connectors.standOnDefaultPort(event.value != 0);
    case EventKind::setClock:
        m_world.clock.offsetSeconds += event.value;
        return;
    case EventKind::sleep:
        return sleep(event.value * kSecond);
    case EventKind::failFile:
        m_world.files.failsAfter = static_cast<int>(event.value);
        return;
    case EventKind::damage:
        return damage(event.value);
    case EventKind::count:
        return;
    }
}

void Stage::startTray() {
    if (m_world.hasTray()) {
        return;
    }
    if (m_world.work.isHeldUp()) {
        // The worker of the process before is still being unwound.
        m_world.queue.inWorld(m_world.queue.now() + kSecond, [this] { startTray(); });
        return;
    }
    ++m_life;
    m_model.trayStarting();
    m_world.startTray();
}

void Stage::quit(Moment linger) {
    if (!m_world.hasTray()) {
        return;
    }
    m_model.quitting();
    m_world.quitTray();
    m_model.quitHandled();
    m_world.queue.inWorld(m_world.queue.now() + linger, [this, life = m_life] {
        if (life == m_life) {
            endTray();
        }
    });
}

void Stage::endTray() {
    if (m_world.hasTray()) {
        const bool isClean = m_world.endTray();
        m_model.trayEnded(isClean);
    }
}

void Stage::click(MenuEntryId entry) {
    if (m_world.hasTray()) {
        m_model.clicking(entry);
        m_world.view()->activate(entry);
    }
}

void Stage::clickAll() {
    for (int entry = static_cast<int>(MenuEntryId::status);
         entry < static_cast<int>(MenuEntryId::quit); ++entry) {
        click(static_cast<MenuEntryId>(entry));
    }
}

void Stage::sleep(Moment duration) {
    const Moment from = m_world.queue.now();
    m_world.queue.skip(duration);
    m_model.slept(from, from + duration);
}

void Stage::damage(std::int64_t way) {
    WorldFiles& files = m_world.files;
    switch (way) {
    case 0:
        files.put(m_world.recordPath(), "{\"currentVersion\":");
        break;
    case 1:
        files.erase(m_world.recordPath());
        break;
    case 2:
        for (const auto& name : files.isDirectory(m_world.versionsPath())
                                    ? files.contentsOfDirectory(m_world.versionsPath())
                                    : QStringList()) {
            files.erase(m_world.versionsPath() + QLatin1Char('/') + name +
                        QStringLiteral("/local-server/cloudflared"));
        }
        break;
    default:
        files.erase(m_world.stateRoot() + QStringLiteral("/runtime"));
    }
    m_model.damaged();
}

void Stage::runUntil(Moment moment) {
    while (!m_model.violation() && m_world.queue.step(moment)) {
    }
}

void Stage::recover() {
    for (std::size_t i = 0; i < kConditionCount; ++i) {
        const auto condition = static_cast<Condition>(i);
        const std::int64_t dull = info(condition).values.front();
        if (condition <= Condition::lastOfConnector) {
            m_world.turn(condition, dull);
        } else if (condition != Condition::config) {
            m_world.set(condition, dull);
        }
    }
    m_world.files.failsAfter = 0;
    runUntil(m_world.queue.now() + 5 * kMinute);
    click(MenuEntryId::restart);
    runUntil(m_world.queue.now() + 3 * kMinute);
    m_model.checkRecovery();
}

} // namespace orvanta::simulation
