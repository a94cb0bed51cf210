// SPDX-License-Identifier: MIT
#include "app/menu_entries.h"
#include "simulation/script/script.h"
#include "simulation/world/seeded.h"

#include <algorithm>

namespace orvanta::simulation {

namespace {

/// How much happens in a run. Long ones are for what comes with time; most of their processor time
/// goes into quiet hours, so they are the fewest.
struct Pace {
    Moment length;
    Moment longestGap;
    int eventCount;
};

Pace paceOf(Seeded& random) {
    const std::int64_t dice = random.below(10);
    if (dice < 4) {
        return {30 * kMinute, 40 * kSecond, 150};
    }
    if (dice < 7) {
        return {6 * kHour, 10 * kMinute, 120};
    }
    return dice < 9 ? Pace{2 * kDay, 4 * kHour, 60} : Pace{7 * kDay, kDay, 40};
}

class Author {
public:
    explicit Author(std::uint64_t seed) : m_random(seed), m_pace(paceOf(m_random)) {}

    Script write() {
        beginning();
        for (int i = 0; i < m_pace.eventCount && m_now < m_pace.length; ++i) {
            m_now += gap();
            happening();
        }
        const auto earlier = [](const Event& a, const Event& b) { return a.at < b.at; };
        std::stable_sort(m_script.events.begin(), m_script.events.end(), earlier);
        m_script.end = std::max(m_pace.length, m_script.events.back().at + kMinute);
        return std::move(m_script);
    }

private:
    void add(EventKind kind, std::int64_t what = 0, std::int64_t value = 0) {
        m_script.events.push_back({m_now, kind, what, value});
    }
    void addLater(Moment delay, EventKind kind, std::int64_t what = 0, std::int64_t value = 0) {
        m_script.events.push_back({m_now + delay, kind, what, value});
    }

    void beginning() {
        for (const Condition condition :
             {Condition::config, Condition::shipped, Condition::storeOff, Condition::offer,
              Condition::announcement, Condition::term, Condition::timerLag}) {
            if (m_random.chance(25)) {
                add(EventKind::set, static_cast<std::int64_t>(condition), valueOf(condition));
            }
        }
        if (m_random.chance(10)) {
            add(EventKind::stranger, 0, 1);
        }
        m_now = kSecond;
        add(EventKind::startTray);
    }

    /// Often at the very same moment, often while the last event still has its effect.
    Moment gap() {
        switch (m_random.below(8)) {
        case 0:
            return 0;
        case 1:
        case 2:
            return m_random.below(kSecond);
        case 3:
        case 4:
            return m_random.below(12 * kSecond);
        default:
            return m_random.below(m_pace.longestGap);
        }
    }

    std::int64_t valueOf(Condition condition) {
        const std::int64_t value = m_random.pick(info(condition).values);
        // Long runs keep the default interval: another one would take most of the time there is.
        const bool isLong = m_pace.length >= kDay;
        const auto seconds = kConfigs.front().pollSeconds;
        const bool isOther = condition == Condition::config &&
                             kConfigs.at(static_cast<std::size_t>(value)).pollSeconds != seconds;
        return isLong && isOther ? 0 : value;
    }

    void happening() {
        const std::int64_t dice = m_random.below(100);
        if (dice < 42) {
            changeCondition();
        } else if (dice < 67) {
            user();
        } else if (dice < 85) {
            connector();
        } else {
            computer();
        }
    }

    void changeCondition() {
        const auto condition =
            static_cast<Condition>(m_random.below(static_cast<std::int64_t>(kConditionCount)));
        const auto what = static_cast<std::int64_t>(condition);
        const bool isOfConnector = condition <= Condition::lastOfConnector;
        const EventKind kind =
            isOfConnector && m_random.chance(50) ? EventKind::turn : EventKind::set;
        add(kind, what, valueOf(condition));
        // A day of exits every second takes as long as months of anything else.
        const bool isCostly = m_pace.length >= kDay &&
                              (condition == Condition::life || condition == Condition::flood);
        if (m_random.chance(80) || isCostly) {
            const Moment longest = m_random.chance(70) ? kMinute : kHour;
            addLater(m_random.below(longest), kind, what, info(condition).values.front());
        }
    }

    void user() {
        using Id = MenuEntryId;
        static const std::vector<Id> kEntries = {
            Id::openDashboard, Id::signIn,          Id::signOut,      Id::restart,
            Id::restart,       Id::checkForUpdates, Id::applyUpdate,  Id::applyUpdate,
            Id::rollback,      Id::rollback,        Id::launchAtLogin};
        if (m_random.chance(8)) {
            add(EventKind::clickAll);
        } else {
            add(EventKind::click, static_cast<std::int64_t>(m_random.pick(kEntries)));
        }
        if (m_random.chance(25)) {
            update();
        } else if (m_random.chance(8)) {
            updateAtStart();
        }
    }

    /// Something newer is offered, found and installed, mostly.
    void update() {
        const auto offer = static_cast<std::int64_t>(Condition::offer);
        if (m_random.chance(40)) {
            setForAWhile(Condition::fileTime, m_random.chance(50) ? 60'000 : 900'000, 0);
            setForAWhile(Condition::archive, m_random.below(2), 0);
        }
        add(EventKind::set, offer, valueOf(Condition::offer));
        add(EventKind::click, static_cast<std::int64_t>(MenuEntryId::checkForUpdates));
        addLater(m_random.below(3 * kSecond), EventKind::click,
                 static_cast<std::int64_t>(MenuEntryId::applyUpdate));
        if (m_random.chance(40)) {
            troubleWithUpdate();
        }
    }

    void troubleWithUpdate() {
        switch (m_random.below(4)) {
        case 0:
            setForAWhile(Condition::minimum, valueOf(Condition::minimum), 0);
            return addLater(m_random.below(20 * kSecond), EventKind::crash, 0, 1);
        case 1:
            return setForAWhile(Condition::archive,
                                static_cast<std::int64_t>(ArchiveReply::wrongDigest), 0);
        case 2:
            setForAWhile(Condition::life, 400, 0);
            break;
        default:
            setForAWhile(Condition::status, static_cast<std::int64_t>(StatusReply::silence), 0);
        }
        // The new version does not come up; the user is impatient or is not.
        const auto impatient = m_random.pick<MenuEntryId>(
            {MenuEntryId::rollback, MenuEntryId::restart, MenuEntryId::openDashboard});
        addLater(m_random.below(30 * kSecond), EventKind::click,
                 static_cast<std::int64_t>(impatient));
    }

    /// A mandatory update does not answer; the user goes back before its trial is over, or waits.
    void updateAtStart() {
        const auto minimum = static_cast<std::int64_t>(Condition::minimum);
        add(EventKind::set, static_cast<std::int64_t>(Condition::offer), valueOf(Condition::offer));
        add(EventKind::set, minimum, m_random.pick<std::int64_t>({3, 4, 9}));
        const auto answer =
            m_random.pick<StatusReply>({StatusReply::notJson, StatusReply::silence});
        setForAWhile(Condition::status, static_cast<std::int64_t>(answer), 0);
        add(EventKind::crash, 0, 1);
        const Moment patience = m_random.between(2 * kSecond, 20 * kSecond);
        addLater(patience, EventKind::set, minimum, -1);
        if (m_random.chance(70)) {
            addLater(patience, EventKind::click, static_cast<std::int64_t>(MenuEntryId::rollback));
        }
    }

    void connector() {
        switch (m_random.below(7)) {
        case 0:
        case 1:
            return add(EventKind::crash, 0, m_random.pick(info(Condition::exitCode).values));
        case 2:
            return add(EventKind::speak, 0, m_random.below(4));
        case 3:
            return add(EventKind::move);
        case 4:
            return add(EventKind::stranger, 0, m_random.below(2));
        default:
            return add(EventKind::askHost, m_random.chance(60) ? 0 : m_random.below(8));
        }
    }

    void computer() {
        switch (m_random.below(8)) {
        case 0:
        case 7:
            return end(EventKind::quit);
        case 1:
            return end(EventKind::kill);
        case 2:
            return add(EventKind::setClock, 0, m_random.between(-400'000, 400'000));
        case 3:
            return add(EventKind::sleep, 0, m_random.between(1, 20'000));
        case 4:
        case 5:
            return add(EventKind::failFile, 0, m_random.between(1, 40));
        default:
            return add(EventKind::damage, 0, m_random.below(4));
        }
    }

    void setForAWhile(Condition condition, std::int64_t value, Moment delay) {
        const auto what = static_cast<std::int64_t>(condition);
        addLater(delay, EventKind::set, what, value);
        addLater(delay + kMinute, EventKind::set, what, info(condition).values.front());
    }

    /// The tray ends and is started again, now and then only to be ended in its first second.
    void end(EventKind kind) {
        const auto linger = [this] { return m_random.chance(50) ? 0 : m_random.below(20'000); };
        const Moment pause = m_random.below(kMinute);
        add(kind, 0, linger());
        if (m_random.chance(20)) {
            // The application is replaced by another version of it.
            add(EventKind::set, static_cast<std::int64_t>(Condition::shipped),
                valueOf(Condition::shipped));
        }
        addLater(pause, EventKind::startTray);
        if (m_random.chance(30)) {
            setForAWhile(Condition::channelDelay, valueOf(Condition::channelDelay), pause);
            addLater(pause + m_random.below(kSecond), kind, 0, linger());
            addLater(pause + kMinute, EventKind::startTray);
        }
    }

    Seeded m_random;
    Pace m_pace;
    Moment m_now = 0;
    Script m_script;
};

} // namespace

Script scriptOf(std::uint64_t seed) {
    return Author(seed).write();
}

} // namespace orvanta::simulation
