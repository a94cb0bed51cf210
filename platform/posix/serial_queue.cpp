// SPDX-License-Identifier: MIT
#include "platform/posix/serial_queue.h"

#include "platform/posix/poll_loop.h"
#include "platform/posix/posix_error.h"
#include "platform/posix/socket_calls.h"
#include "platform/posix/tcp_listener.h"

#include <csignal>
#include <pthread.h>
#include <system_error>
#include <thread>

namespace orvanta {
namespace {

/// Threads started meanwhile leave all signals to the main thread.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before;
};

/// The end of a dotted label, which tells more than its start, as far as the system takes it.
QByteArray threadName(const QString& label) {
    constexpr qsizetype kLongestName = 15;
    return label.section(u'.', -1).toUtf8().left(kLongestName);
}

void nameThisThread(const QByteArray& name) {
#ifdef __APPLE__
    ::pthread_setname_np(name.constData());
#else
    ::pthread_setname_np(::pthread_self(), name.constData());
#endif
}

std::thread startThread(const std::shared_ptr<PollLoop>& loop, const QByteArray& name) {
    const SignalsBlocked blocked;
    try {
        return std::thread([loop, name] {
            nameThisThread(name);
            loop->run();
        });
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), QStringLiteral("A thread could not be started"));
    }
}

class PosixSerialQueue : public SerialQueue {
public:
    explicit PosixSerialQueue(QByteArray name) : m_name(std::move(name)) {}

    ~PosixSerialQueue() override {
        if (m_loop == nullptr) {
            return;
        }
        m_loop->end();
        if (m_thread.get_id() == std::this_thread::get_id()) {
            m_thread.detach();
        } else {
            m_thread.join();
        }
    }

    std::shared_ptr<TcpListener> listen(Reach reach, NewConnectionHandler onConnection) override {
        FileDescriptor socket = openListeningSocket(reach);
        startOnce();
        auto listener = std::make_shared<PosixTcpListener>(std::move(socket), m_loop, m_connections,
                                                           std::move(onConnection));
        m_loop->add(listener);
        return listener;
    }

private:
    void startOnce() {
        if (m_loop == nullptr) {
            const auto loop = std::make_shared<PollLoop>();
            m_thread = startThread(loop, m_name);
            m_loop = loop;
        }
    }

    const QByteArray m_name;
    const std::shared_ptr<OpenConnections> m_connections = std::make_shared<OpenConnections>();
    std::shared_ptr<PollLoop> m_loop; ///< from the first `listen` on
    std::thread m_thread;
};

} // namespace

std::shared_ptr<SerialQueue> PosixSerialQueueFactory::makeSerialQueue(const QString& label) {
    return std::make_shared<PosixSerialQueue>(threadName(label));
}

} // namespace orvanta
