// SPDX-License-Identifier: MIT
#include "simulation/runner/run.h"

#include "simulation/runner/complaints.h"
#include "simulation/runner/stage.h"

namespace orvanta::simulation {

Outcome run(const Script& script, bool isTalking) {
    Outcome outcome;
    Complaints complaints;
    {
        Stage stage(isTalking);
        for (const Event& event : script.events) {
            stage.world().queue.inWorld(event.at, [&stage, &event] { stage.perform(event); });
        }
        stage.runUntil(script.end);
        stage.recover();
        outcome.length = stage.world().queue.now();
        outcome.fingerprint = stage.model().fingerprint();
        outcome.violation = stage.model().violation();
        stage.world().queue.clear();
    }
    if (const auto complaint = complaints.heard(); !complaint.empty() && !outcome.violation) {
        outcome.violation = {outcome.length, "a task ends with an error that nobody takes",
                             complaint};
    }
    return outcome;
}

} // namespace orvanta::simulation
