// SPDX-License-Identifier: MIT
// The connector's output against an independent reading. A chunk stands for itself, so a line that
// is cut is two lines; every line that is not cut has to be read the same wherever the cuts are.
#include "connector/port_announcement.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/plain_output.h"

#include <algorithm>

namespace orvanta::fuzz {
namespace {

/// How many U+FFFD a broken sequence becomes is the decoder's business.
std::u32string withSingleReplacements(std::u32string text) {
    const auto isSecond = [](char32_t one, char32_t other) {
        return one == 0xFFFD && other == 0xFFFD;
    };
    text.erase(std::unique(text.begin(), text.end(), isSecond), text.end());
    return text;
}

void tryChunk(const QByteArray& chunk) {
    const QStringList lines = outputLines(chunk);
    const auto expected = plainLines({chunk.constData(), static_cast<std::size_t>(chunk.size())});
    require(lines.size() == static_cast<qsizetype>(expected.size()), "lines end at every newline");
    for (qsizetype index = 0; index < lines.size(); ++index) {
        const auto& line = expected[static_cast<std::size_t>(index)];
        require(withSingleReplacements(lines[index].toStdU32String()) ==
                    withSingleReplacements(line),
                "a line is decoded as it was written");
        require(parsePort(lines[index]) == plainPort(line), "a line announces what it says");
    }
    require(outputLines(lines.join(u'\n').toUtf8()) == lines,
            "lines put together are the same lines");
}

/// The lines of two chunks and those of both in one differ at the cut only.
void tryCut(const QByteArray& chunk, qsizetype at) {
    const QStringList whole = outputLines(chunk);
    const QStringList before = outputLines(chunk.left(at));
    const QStringList after = outputLines(chunk.mid(at));
    const bool isAtLineEnd = at > 0 && chunk[at - 1] == '\n';
    if (isAtLineEnd) {
        require(before + after == whole, "a cut after a line changes nothing");
        return;
    }
    const QStringList untouchedBefore = before.mid(0, std::max<qsizetype>(before.size() - 1, 0));
    const QStringList untouchedAfter = after.mid(1);
    const qsizetype touched = whole.size() - untouchedBefore.size() - untouchedAfter.size();
    require(touched >= 0 && touched <= 2, "a cut touches one line, or the two around it");
    require(whole.mid(0, untouchedBefore.size()) == untouchedBefore &&
                whole.mid(whole.size() - untouchedAfter.size()) == untouchedAfter,
            "the lines that are not cut are read the same");
}

} // namespace

void tryInput(const QByteArray& input) {
    const FuzzInput parts(input);
    tryChunk(parts.bytes);
    tryCut(parts.bytes, parts.choice % (parts.bytes.size() + 1));
}

} // namespace orvanta::fuzz
