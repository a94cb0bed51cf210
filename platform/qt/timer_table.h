// SPDX-License-Identifier: MIT
#pragma once

#include "platform/main_queue.h"

#include <QObject>

#include <functional>
#include <map>
#include <memory>

namespace orvanta {

/// Timers of the main loop and what each of them runs. Main thread only.
class TimerTable : public QObject {
public:
    ~TimerTable() override { clear(); }

    /// The id of a timer that runs `job` after `delay`, and every `delay` from then on when
    /// `repeats`. It is never early; delays that the loop cannot express are clamped.
    int add(Seconds delay, std::function<void()> job, bool repeats);

    /// An unknown id is no error.
    void remove(int id);

    /// For the end of the loop: drops all jobs, also those that the dropping of others adds.
    void clear();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    struct Timer {
        std::shared_ptr<const std::function<void()>> job;
        bool repeats = false;
    };

    std::map<int, Timer> m_timers;
};

} // namespace orvanta
