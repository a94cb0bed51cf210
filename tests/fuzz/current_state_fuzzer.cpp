// SPDX-License-Identifier: MIT
// current.json: read as an independent reading has it, and written so that it reads the same.
#include "fuzz/fuzz_target.h"
#include "fuzz/plain_record.h"
#include "fuzz/record_round_trip.h"
#include "runtime/runtime_records.h"

namespace orvanta::fuzz {
namespace {

std::optional<MacRuntimeCurrentState> expectedState(const QByteArray& document) {
    PlainRecord record(document);
    const MacRuntimeCurrentState state{record.requiredText(u"currentVersion"),
                                       record.text(u"previousVersion"),
                                       record.text(u"lastHealthyVersion"),
                                       record.requiredText(u"channel"),
                                       record.text(u"lastCheckedAt"),
                                       record.text(u"availableVersion"),
                                       record.text(u"updatedAt"),
                                       record.text(u"lastHealthyAt"),
                                       record.boolean(u"pendingHealthCheck")};
    return record.isValid() ? std::optional(state) : std::nullopt;
}

} // namespace

void tryInput(const QByteArray& input) {
    const auto state = decodedIfPossible<MacRuntimeCurrentState>(input);
    require(state == expectedState(input), "the state is read strictly and completely");
    if (state) {
        tryRoundTrip(*state);
    }
}

} // namespace orvanta::fuzz
