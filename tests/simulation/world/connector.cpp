// SPDX-License-Identifier: MIT
#include "simulation/world/connector.h"

#include "simulation/world/connectors.h"

#include <QUrl>

namespace orvanta::simulation {

namespace {

const char kFirstWords[] = "Desktop Connector running on http://";

QByteArray line(const char* host, std::int64_t port) {
    return kFirstWords + QByteArray(host) + ':' + QByteArray::number(qlonglong(port)) + '\n';
}

} // namespace

Connector::Connector(Connectors& all, int number, Conditions habits, ChildProcessOptions options)
    : m_all(all), m_number(number), m_habits(habits), m_options(std::move(options)),
      m_requestedPort(m_options.environment.value("PORT").value_or("0").toLongLong()) {}

void Connector::begin() {
    const Moment boot = m_habits[Condition::boot] * kMillisecond;
    const Moment life = m_habits[Condition::life] * kMillisecond;
    WorldQueue& queue = m_all.queue;
    queue.inWorld(queue.now() + boot, [self = shared_from_this()] { self->bootDone(); });
    if (life > 0) {
        queue.inWorld(queue.now() + boot + life, [self = shared_from_this()] {
            // Unless it has been turned meanwhile into one that lives on.
            if (self->m_habits[Condition::life] > 0) {
                self->exit(static_cast<int>(self->m_habits[Condition::exitCode]));
            }
        });
    }
    for (std::int64_t piece = 0; piece < m_habits[Condition::flood]; ++piece) {
        static const QByteArray kPiece = QByteArray(255, 'x').append('\n').repeated(16);
        print(kPiece, {}, piece);
    }
}

void Connector::bootDone() {
    if (!m_isAlive) {
        return;
    }
    const bool isTaken = m_all.listenerAt(m_requestedPort) != nullptr;
    if (isTaken && m_habits.as<TakenPort>(Condition::takenPort) == TakenPort::exits) {
        exit(1);
        return;
    }
    if (isTaken && m_habits.as<TakenPort>(Condition::takenPort) == TakenPort::hangs) {
        return;
    }
    listen(isTaken || m_requestedPort == 0 ? m_all.freePort() : m_requestedPort);
    announce();
}

void Connector::listen(std::int64_t port) {
    m_port = port;
}

std::int64_t Connector::otherPort() const {
    return m_port == 50'000 ? 50'001 : 50'000;
}

void Connector::announce() {
    const QByteArray plain = line("127.0.0.1", m_port);
    const QByteArray wrong = line("localhost", otherPort());
    switch (m_habits.as<Announcement>(Condition::announcement)) {
    case Announcement::plain:
        return print("starting\r\n" + plain, {m_port}, 0);
    case Announcement::onStandardError:
        return print("PORT: " + QByteArray::number(qlonglong(m_port)) + "\n", {m_port}, 0);
    case Announcement::none:
        return;
    case Announcement::twice:
        print(plain, {m_port}, 0);
        return print(plain, {m_port}, 700);
    case Announcement::split:
        print(plain.left(30), {}, 0);
        return print(plain.mid(30), {}, 1);
    case Announcement::late:
        return print(plain, {m_port}, 5'000);
    case Announcement::wrongFirst:
        return print(wrong + plain, {otherPort(), m_port}, 0);
    case Announcement::wrongOnly:
        return print(wrong, {otherPort()}, 0);
    }
}

void Connector::print(const QByteArray& chunk, std::vector<std::int64_t> ports,
                      std::int64_t extraDelay) {
    if (!m_options.onOutput) {
        return;
    }
    const Moment delay = (m_all.conditions[Condition::outputDelay] + extraDelay) * kMillisecond;
    m_all.queue.forTray(m_all.queue.now() + delay,
                        [self = shared_from_this(), chunk, ports = std::move(ports)] {
                            for (const std::int64_t port : ports) {
                                self->m_all.witness->portAnnounced(port);
                            }
                            self->m_options.onOutput(chunk);
                        });
}

void Connector::speak(std::int64_t speech) {
    switch (speech) {
    case 0:
        return print("PORT: 0\n", {0}, 0);
    case 1:
        return print("PORT: 99999\nPORT: 123456789012345678901\n", {99'999}, 0);
    case 2:
        return print(QByteArray("\xff\xfe\x00PORT: 1\n", 11) + QByteArray(1000, '\n'), {}, 0);
    default:
        return m_port > 0 ? print(line("127.0.0.1", m_port), {m_port}, 0) : void();
    }
}

void Connector::move() {
    if (m_port > 0) {
        listen(m_all.freePort());
        announce();
    }
}

void Connector::exit(int status) {
    if (!m_isAlive) {
        return;
    }
    const auto self = shared_from_this();
    m_isAlive = false;
    m_port = 0;
    m_all.forget(this);
    if (!m_options.onExit) {
        return;
    }
    const Moment notice = m_all.conditions[Condition::exitNotice] * kMillisecond;
    m_all.queue.forTray(m_all.queue.now() + notice, [self, status] {
        self->m_isExitNoticed = true;
        self->m_all.witness->exitReported(*self, status);
        self->m_options.onExit(status);
        self->m_all.witness->exitHandled(*self, status);
    });
}

void Connector::terminate() {
    if (m_isExitNoticed) {
        return;
    }
    m_all.witness->terminated(*this);
    const std::int64_t delay = m_habits[Condition::term];
    if (delay >= 0) {
        constexpr int kTerminated = 15;
        m_all.queue.inWorld(m_all.queue.now() + delay * kMillisecond,
                            [self = shared_from_this()] { self->exit(kTerminated); });
    }
}

void Connector::askHost(const QByteArray& request) const {
    const auto address = m_options.environment.value("ORVANTA_HOST_CONTROL_URL");
    if (address) {
        m_all.askHost(QUrl(QString::fromLatin1(*address)).port(), request);
    }
}

void Connector::orphan() {
    m_options.onOutput = nullptr;
    m_options.onExit = nullptr;
}

} // namespace orvanta::simulation
