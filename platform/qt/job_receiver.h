// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <atomic>
#include <functional>

namespace orvanta {

/// Runs what any thread posts to it, on the thread that made it. That thread destroys the jobs too,
/// which a functor handed to QMetaObject::invokeMethod cannot rely on.
///
/// What a poster did before `post` is visible to its job. Nobody may post any more when this is
/// destroyed; jobs still queued are dropped then.
class JobReceiver : public QObject {
public:
    ~JobReceiver() override { drop(); }

    /// Runs `job` on a later turn of the loop, in the order of posting. Any thread.
    void post(std::function<void()> job);

    /// Destroys all jobs uncalled. Only the thread that made this.
    void drop();

    bool event(QEvent* event) override;

private:
    void takeOver() const;

    /// Written before a job is handed to the toolkit, read before one is touched. The toolkit's own
    /// lock orders the two already, but is compiled where a race detector cannot see it.
    std::atomic<unsigned> m_handedOver = 0;
};

} // namespace orvanta
