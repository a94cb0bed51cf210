// SPDX-License-Identifier: MIT
#include "platform/posix/signal_watch.h"

#include "platform/posix/per_system.h"
#include "platform/posix/posix_error.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace orvanta {
namespace {

/// Where the handler writes the numbers of signals; a handler can be given nothing else.
std::atomic<int> signalPipe = -1;
static_assert(std::atomic<int>::is_always_lock_free);

void noteSignal(int signal) {
    const int before = errno;
    const auto number = static_cast<unsigned char>(signal);
    // A full pipe has signals enough to report.
    [[maybe_unused]] const ssize_t count = ::write(signalPipe, &number, 1);
    errno = before;
}

} // namespace

SignalWatch::SignalWatch(std::function<void(int)> onSignal) : m_onSignal(std::move(onSignal)) {
    int ends[2];
    if (!openPipe(ends)) {
        throw posixError(errno, QStringLiteral("Signals could not be watched"));
    }
    m_readEnd = FileDescriptor(ends[0]);
    m_writeEnd = FileDescriptor(ends[1]);
    ::fcntl(m_readEnd.get(), F_SETFL, O_NONBLOCK);
    ::fcntl(m_writeEnd.get(), F_SETFL, O_NONBLOCK);
    signalPipe = m_writeEnd.get();
    m_notifier = std::make_unique<QSocketNotifier>(m_readEnd.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { report(); });
}

SignalWatch::~SignalWatch() {
    for (const auto& [signal, action] : m_before) {
        ::sigaction(signal, &action, nullptr);
    }
    signalPipe = -1;
}

void SignalWatch::watch(int signal) {
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    sigfillset(&action.sa_mask);
    struct sigaction before = {};
    if (::sigaction(signal, &action, &before) != 0) {
        throw posixError(errno, QStringLiteral("Signal %1 could not be watched").arg(signal));
    }
    m_before.emplace_back(signal, before);
    sigset_t taken;
    sigemptyset(&taken);
    sigaddset(&taken, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &taken, nullptr);
}

void SignalWatch::watchUnlessIgnored(int signal) {
    struct sigaction now = {};
    ::sigaction(signal, nullptr, &now);
    if (now.sa_handler != SIG_IGN) {
        watch(signal);
    }
}

void SignalWatch::report() {
    std::array<unsigned char, 64> numbers;
    const ssize_t count = ::read(m_readEnd.get(), numbers.data(), numbers.size());
    for (ssize_t index = 0; index < count; ++index) {
        m_onSignal(numbers[static_cast<std::size_t>(index)]);
    }
}

} // namespace orvanta
