// SPDX-License-Identifier: MIT
// What a connector answers, as the bytes of a connection: it is read the same wherever they are
// cut, never past its limit, and not at all once it has been refused.
#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_target.h"
#include "platform/beast/reply_parser.h"

#include <string_view>
#include <vector>

namespace orvanta::fuzz {
namespace {

constexpr qsizetype kLimit = 64;

struct Outcome {
    ReplyParser::Progress progress;
    bool isFinished = false;
    int status = 0;
    QByteArray body;

    /// When a reply is refused depends on where it is cut; that it is does not.
    bool isSameAs(const Outcome& other) const {
        return isFinished == other.isFinished && status == other.status && body == other.body;
    }
};

std::string_view viewOf(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

Outcome outcomeOf(const std::vector<QByteArray>& pieces, std::optional<qsizetype> limit) {
    ReplyParser parser(limit);
    Outcome outcome{ReplyParser::Progress::unfinished, false, 0, {}};
    for (const QByteArray& piece : pieces) {
        outcome.progress = parser.read(viewOf(piece));
    }
    outcome.isFinished = parser.finish();
    if (outcome.isFinished) {
        outcome.status = parser.status();
        outcome.body = parser.takeBody();
    }
    return outcome;
}

void requireSensible(const Outcome& outcome) {
    using Progress = ReplyParser::Progress;
    require(outcome.isFinished || outcome.progress != Progress::complete,
            "a complete reply needs nothing more");
    require(!outcome.isFinished || outcome.progress == Progress::complete ||
                outcome.progress == Progress::unfinished,
            "what was refused stays so");
    require(outcome.body.size() <= kLimit, "a body has no more bytes than it may");
    require(!outcome.isFinished || (outcome.status >= 200 && outcome.status <= 999),
            "a reply that ends has a final status of three digits");
}

} // namespace

void tryInput(const QByteArray& input) {
    const FuzzInput parts(input);
    const Outcome whole = outcomeOf({parts.bytes}, kLimit);
    requireSensible(whole);
    const Outcome cut = outcomeOf(piecesOf(parts.bytes, parts.choice, 32), kLimit);
    requireSensible(cut);
    require(cut.isSameAs(whole), "cuts change nothing");
    const Outcome dropped = outcomeOf({parts.bytes}, std::nullopt);
    require(dropped.body.isEmpty(), "a body that is dropped is not kept");
    require(!whole.isFinished || dropped.status == whole.status,
            "a status does not hang on what becomes of the body");
}

} // namespace orvanta::fuzz
