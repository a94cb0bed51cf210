// SPDX-License-Identifier: MIT
#include "platform/curl/curl_program.h"

#include "platform/curl/watched_exit.h"
#include "platform/posix/per_system.h"

#include <array>
#include <cerrno>
#include <utility>

namespace orvanta {
namespace {

/// Lets curl go on while the main loop is busy.
constexpr int kRoomForBody = 1024 * 1024; // bytes

constexpr std::size_t kPieceOfAccount = 16 * 1024;

} // namespace

CurlProgram::Stream::Stream(FileDescriptor readEnd)
    : descriptor(std::move(readEnd)), notifier(descriptor.get(), QSocketNotifier::Read) {}

void CurlProgram::Stream::close() {
    notifier.setEnabled(false);
    descriptor.reset();
}

CurlProgram::CurlProgram(const ChildProcessOptions& options, const ExitWatchFactory& watchExits,
                         CurlListener& listener)
    : CurlProgram(spawnProcess(options), watchExits, listener) {}

CurlProgram::CurlProgram(SpawnedProcess process, const ExitWatchFactory& watchExits,
                         CurlListener& listener)
    : m_listener(&listener),
      m_exit(WatchedExit::of(process.pid, watchExits, [this] { endIfOver(); })),
      m_body(std::move(process.standardOutput)), m_account(std::move(process.standardError)) {
    enlargePipe(m_body.descriptor.get(), kRoomForBody);
    QObject::connect(&m_body.notifier, &QSocketNotifier::activated, &m_body.notifier,
                     [this] { readBody(); });
    QObject::connect(&m_account.notifier, &QSocketNotifier::activated, &m_account.notifier,
                     [this] { readAccount(); });
}

CurlProgram::~CurlProgram() {
    kill();
}

void CurlProgram::kill() {
    m_listener = nullptr;
    m_exit->kill();
    m_body.close();
    m_account.close();
}

/// Takes all there is, so that no byte of the body is read before the head that it belongs to.
void CurlProgram::readAccount() {
    std::array<char, kPieceOfAccount> piece;
    while (m_account.descriptor.isOpen()) {
        const ssize_t count = ::read(m_account.descriptor.get(), piece.data(), piece.size());
        if (count > 0) {
            m_listener->takeAccount(QByteArrayView(piece.data(), count));
        } else if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
            return;
        } else {
            m_account.close();
            endIfOver();
        }
    }
}

void CurlProgram::readBody() {
    readAccount();
    if (!m_body.descriptor.isOpen()) {
        return; // killed over what was read
    }
    if (m_listener->readBody(m_body.descriptor.get()) == ReplyBody::Progress::Ended) {
        m_body.close();
        endIfOver();
    }
}

void CurlProgram::endIfOver() {
    if (m_exit->status() && !m_body.descriptor.isOpen() && !m_account.descriptor.isOpen()) {
        if (auto* const listener = std::exchange(m_listener, nullptr)) {
            listener->takeEnd(*m_exit->status());
        }
    }
}

} // namespace orvanta
