// SPDX-License-Identifier: MIT
// What is typed, cut anywhere: the lines do not depend on the cuts, and a line chooses an entry
// only when that can be chosen.
#include "app/terminal_commands.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_target.h"

#include <algorithm>
#include <iterator>

namespace orvanta::fuzz {
namespace {

/// A command is looked up on its own, so a few of them do.
constexpr std::size_t kMostTried = 3;

using Lines = std::vector<LineSplitter::Line>;

Lines linesOf(const std::vector<QByteArray>& pieces) {
    LineSplitter splitter;
    Lines lines;
    for (const QByteArray& piece : pieces) {
        std::ranges::copy(splitter.feed(piece), std::back_inserter(lines));
    }
    std::ranges::copy(splitter.finish(), std::back_inserter(lines));
    require(splitter.finish().empty(), "the end of the input comes once");
    return lines;
}

/// The text after the last line end is a line only when it is not empty.
Lines expectedLines(const QByteArray& typed) {
    auto texts = typed.split('\n');
    if (texts.last().isEmpty()) {
        texts.removeLast();
    }
    Lines lines;
    for (const QByteArray& text : texts) {
        lines.push_back(text.size() > 4096 ? LineSplitter::Line() : LineSplitter::Line(text));
    }
    return lines;
}

/// A menu in any of its states, with text of the connector's that looks like what is typed.
MenuSnapshot snapshotFor(std::uint16_t choice, const QString& text) {
    const auto bit = [choice](int index) { return (choice >> index & 1) != 0; };
    return {.menuState = static_cast<ConnectorMenuState>(choice % 3),
            .statusText = text,
            .workspaceId = text,
            .lastError = text,
            .webAppBaseURL = {},
            .launchAtLoginEnabled = bit(4),
            .runtimeUpdateStatusText = text,
            .runtimeUpdateAvailable = bit(5),
            .runtimeCanRollback = bit(6),
            .runtimeUpdateInProgress = bit(7)};
}

QString withoutOuterSpace(QString text) {
    while (!text.isEmpty() && text.back().isSpace()) {
        text.chop(1);
    }
    while (!text.isEmpty() && text.front().isSpace()) {
        text.remove(0, 1);
    }
    return text;
}

std::optional<MenuEntryId> expectedCommand(const std::vector<MenuEntry>& entries,
                                           const QByteArray& line) {
    const QString typed = withoutOuterSpace(QString::fromUtf8(line));
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const MenuEntry& entry = entries[index];
        const bool isNamed = typed == QString::number(index + 1) ||
                             typed.toCaseFolded() == entry.text.toCaseFolded();
        if (isNamed && entry.isVisible && entry.isEnabled) {
            return entry.id;
        }
    }
    return std::nullopt;
}

void tryLine(const QByteArray& line, std::uint16_t choice) {
    const auto entries = menuEntries(snapshotFor(choice, QString::fromUtf8(line)));
    const auto command = commandFor(entries, line);
    require(command == expectedCommand(entries, line), "a line names an entry or none");
    if (!command) {
        return;
    }
    const MenuEntry& entry = entries.at(static_cast<std::size_t>(*command) - 1);
    require(entry.kind == MenuEntryKind::button || entry.kind == MenuEntryKind::toggle,
            "only what can be pressed is chosen");
    require(commandHelp(entries).contains(entry.text), "what is chosen is among what is offered");
}

} // namespace

void tryInput(const QByteArray& input) {
    const FuzzInput parts(input);
    const QByteArray typed = expanded(parts.bytes, 1365);
    const auto lines = linesOf({typed});
    require(lines == expectedLines(typed), "lines end at every line feed and have a bound");
    require(lines == linesOf(piecesOf(typed, parts.choice, typed.size() / 4 + 2)),
            "lines do not depend on the cuts");
    for (std::size_t index = 0; index < std::min(lines.size(), kMostTried); ++index) {
        if (lines[index]) {
            tryLine(*lines[index], parts.choice);
        }
    }
}

} // namespace orvanta::fuzz
