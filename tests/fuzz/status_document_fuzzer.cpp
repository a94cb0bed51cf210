// SPDX-License-Identifier: MIT
// The status document against an independent reading, and the menu state against a table.
#include "base/json.h"
#include "connector/connection_status.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/plain_record.h"

namespace orvanta::fuzz {
namespace {

std::optional<TrayConnectionStatus> decodedIfPossible(const QByteArray& document) {
    try {
        return TrayConnectionStatus::decode(document);
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

LocalServerStatus expectedLocalServer(PlainRecord& record) {
    return {record.text(u"host"), record.integer(u"port"), record.text(u"baseUrl"),
            record.integer(u"requestedPort")};
}

CloudflaredConnectionStatus expectedCloudflared(PlainRecord& record) {
    return {record.boolean(u"running"), record.boolean(u"healthy"),
            record.integer(u"restartCount")};
}

std::optional<TrayConnectionStatus> expectedStatus(const QByteArray& document) {
    PlainRecord record(document);
    const TrayConnectionStatus status{record.text(u"mode"),
                                      record.text(u"accessMode"),
                                      record.text(u"state"),
                                      record.text(u"workspaceId"),
                                      record.text(u"hostname"),
                                      record.text(u"webAppUrl"),
                                      record.record(u"localServer", expectedLocalServer),
                                      record.record(u"cloudflared", expectedCloudflared)};
    return record.isValid() ? std::optional(status) : std::nullopt;
}

/// The text without letter case; empty when there is none.
QString folded(const std::optional<QString>& text) {
    return text.value_or(QString()).toCaseFolded();
}

/// The first row that fits decides.
ConnectorMenuState expectedState(const TrayConnectionStatus& status) {
    const QString state = folded(status.state);
    const bool isRemote = folded(status.accessMode) == QStringLiteral("cloudflare-only") ||
                          folded(status.mode) == QStringLiteral("production");
    const bool isPaired =
        !folded(status.workspaceId).isEmpty() && !folded(status.hostname).isEmpty();
    const auto tunnel = status.cloudflared.value_or(CloudflaredConnectionStatus());
    const bool isUp = tunnel.running == true && tunnel.healthy == true;
    const struct {
        bool fits;
        ConnectorMenuState result;
    } rows[] = {
        {state == QStringLiteral("needs_pairing"), ConnectorMenuState::notPaired},
        {state == QStringLiteral("needs_login"), ConnectorMenuState::notPaired},
        {state != QStringLiteral("running"), ConnectorMenuState::offline},
        {!isRemote, ConnectorMenuState::online},
        {!isPaired, ConnectorMenuState::notPaired},
        {!isUp, ConnectorMenuState::offline},
        {true, ConnectorMenuState::online},
    };
    std::size_t row = 0;
    while (!rows[row].fits) {
        ++row;
    }
    return rows[row].result;
}

std::optional<bool> pickedFlag(const QByteArray& input, int index) {
    const auto text = pickedText(input, index, {"true", "false", nullptr});
    return text ? std::optional(*text == QStringLiteral("true")) : std::nullopt;
}

/// A status whose members the input picks, so that every row of the table is met often.
TrayConnectionStatus pickedStatus(const QByteArray& input) {
    TrayConnectionStatus status;
    status.state = pickedText(
        input, 0, {"RUNNING", "running", "NEEDS_LOGIN", "needs_pairing", "STARTING", "", nullptr});
    status.mode = pickedText(input, 1, {"production", "Production", "development", "", nullptr});
    status.accessMode =
        pickedText(input, 2, {"cloudflare-only", "Cloudflare-Only", "local", "", nullptr});
    status.workspaceId = pickedText(input, 3, {"w", "", nullptr});
    status.hostname = pickedText(input, 4, {"h", "", nullptr});
    if (pickedText(input, 5, {"there", "there", nullptr})) {
        status.cloudflared = {pickedFlag(input, 6), pickedFlag(input, 7), std::nullopt};
    }
    return status;
}

} // namespace

void tryInput(const QByteArray& input) {
    const auto status = decodedIfPossible(input);
    require(status == expectedStatus(input), "the status is read strictly and completely");
    const auto state = evaluate(status);
    require(state == (status ? expectedState(*status) : ConnectorMenuState::offline),
            "the menu state is that of the table");
    require(menuStateFromRawValue(rawValue(state)) == state, "a raw value names its state");
    const auto picked = pickedStatus(input);
    require(evaluate(picked) == expectedState(picked), "the menu state is that of the table");
}

} // namespace orvanta::fuzz
