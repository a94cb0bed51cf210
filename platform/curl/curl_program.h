// SPDX-License-Identifier: MIT
#pragma once

#include "platform/child_process.h"
#include "platform/curl/reply_body.h"
#include "platform/posix/exit_watch.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/spawn.h"

#include <QByteArrayView>
#include <QSocketNotifier>

#include <memory>

namespace orvanta {

class WatchedExit;

/// Whom a `CurlProgram` tells, from the event loop, never inside its constructor. Each may kill it,
/// none may destroy it.
class CurlListener {
public:
    virtual ~CurlListener() = default;

    /// More of what it prints on standard error.
    virtual void takeAccount(QByteArrayView piece) = 0;
    /// Standard output holds bytes, or its end; all that had been printed on standard error before
    /// them has been taken. Reads once.
    virtual ReplyBody::Progress readBody(int descriptor) = 0;
    /// It has exited and both streams are at their end. `status` is that of waitpid, -1 when
    /// something else has taken it. Called once and last.
    virtual void takeEnd(int status) = 0;
};

/// One run of curl, under the promises of `ChildProcessLauncher`. Main thread only.
///
///     streams, running --exit--> streams        streams: one of the two waits for its end
///           |                       |           running: waits for the exit watch
///       both end                both end        kill leads from everywhere to silence
///           v                       v
///        running ----exit------> ended
class CurlProgram {
public:
    /// Starts it. `listener` outlives this object. The callbacks of `options` are not looked at.
    /// Throws `PlatformError` when the system refuses; nothing runs then.
    CurlProgram(const ChildProcessOptions& options, const ExitWatchFactory& watchExits,
                CurlListener& listener);
    CurlProgram(const CurlProgram&) = delete;
    CurlProgram& operator=(const CurlProgram&) = delete;
    /// Kills it.
    ~CurlProgram();

    /// Sends SIGKILL unless it has exited, and closes the pipes. The listener hears nothing more.
    /// Whoever turns the event loop afterwards, reaps it.
    void kill();

private:
    CurlProgram(SpawnedProcess process, const ExitWatchFactory& watchExits, CurlListener& listener);

    void readAccount();
    void readBody();
    void endIfOver();

    struct Stream {
        explicit Stream(FileDescriptor readEnd);
        void close();

        FileDescriptor descriptor;
        QSocketNotifier notifier;
    };

    CurlListener* m_listener; ///< none once it hears nothing more
    std::shared_ptr<WatchedExit> m_exit;
    Stream m_body;
    Stream m_account;
};

} // namespace orvanta
