// SPDX-License-Identifier: MIT
#include "soak/run.h"

#include "soak/deeds.h"
#include "soak/failure.h"
#include "soak/restarts.h"

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace orvanta::soak {
namespace {

constexpr double kSampleInterval = 10;
constexpr double kRestartSampleInterval = 30; ///< a sample takes as long as several restarts
constexpr int kSamples = 20;                  ///< in a run too short for the intervals
constexpr int kFewestSamples = 6;             ///< for which a run goes on beyond its time
constexpr int kRestMs = 500;

} // namespace

void print(const QString& text) {
    std::fputs(qPrintable(text + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

Run::Run(const Plan& plan, User& user)
    : m_plan(plan), m_random(plan.seed), m_tray(plan.tray, user), m_csv(plan.csv) {
    require(m_csv.open(QIODevice::WriteOnly), QStringLiteral("cannot write ") + plan.csv);
    m_csv.write(csvHeader());
    m_tray.settle();
    m_time.start();
}

double Run::seconds() const {
    return static_cast<double>(m_time.elapsed()) / 1000;
}

void Run::go() {
    if (m_plan.restarts > 0) {
        restart();
    } else {
        soak();
    }
    print(QStringLiteral("connectors started: %1; two at a time, both ended here: %2")
              .arg(m_tray.connector().starts())
              .arg(m_tray.pairsEnded()));
}

void Run::soak() {
    Deeds deeds(m_tray, m_random);
    deeds.begin();
    m_time.start();
    const double interval = std::min(kSampleInterval, m_plan.seconds / kSamples);
    for (int done = 1; seconds() < m_plan.seconds || m_samples.size() < kFewestSamples; ++done) {
        deeds.next();
        if (isSampleDue(interval)) {
            takeSample(done);
        }
    }
    for (const auto& [name, count] : deeds.counts()) {
        print(QStringLiteral("%1  %2").arg(count, 6).arg(name));
    }
}

void Run::restart() {
    Restarts restarts(m_tray, m_random);
    while (restarts.count() < m_plan.restarts) {
        restarts.next();
        const int sinceSample = restarts.count() - (m_samples.empty() ? 0 : m_samples.back().deeds);
        if (isSampleDue(kRestartSampleInterval) || sinceSample > m_plan.restarts / kSamples) {
            takeSample(restarts.count());
        }
    }
    print(QStringLiteral("%1 restarts in %2 s: %3 asked for at host control, %4 at once after a "
                         "port had failed, %5 a second after a crash")
              .arg(restarts.count())
              .arg(seconds(), 0, 'f', 0)
              .arg(restarts.asked())
              .arg(restarts.retried())
              .arg(restarts.crashed()));
}

/// Connections that an earlier deed left open are seen to be dead with the connector they led to,
/// at the polls that follow.
void Run::restAWhile() {
    m_tray.settle();
    const pid_t before = m_tray.connector().pid();
    ::kill(before, SIGKILL);
    m_tray.awaitNewConnector(before);
    m_tray.settle();
    m_tray.pauseFor(kRestMs);
}

bool Run::isSampleDue(double interval) const {
    return m_samples.empty() || seconds() >= m_samples.back().seconds + interval;
}

void Run::takeSample(int deeds) {
    restAWhile();
    Sample sample = measure(m_tray.pid(), m_tray.stateRoot());
    sample.seconds = seconds();
    sample.deeds = deeds;
    m_samples.push_back(sample);
    m_csv.write(csvLine(sample));
    m_csv.flush();
}

} // namespace orvanta::soak
