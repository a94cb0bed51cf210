// SPDX-License-Identifier: MIT
#include "app/terminal_front_end.h"

#include "app/orvanta_menu_bar_view.h"
#include "app/terminal_screen.h"
#include "platform/posix/terminal_device.h"

namespace orvanta {
namespace {

constexpr Seconds kForegroundCheckInterval{1};

} // namespace

TerminalFrontEnd::TerminalFrontEnd(OrvantaMenuBarView& view, TerminalScreen& screen,
                                   MainQueue& queue, int input, int output)
    : m_view(view), m_screen(screen), m_input(input), m_output(output),
      m_reader(input, queue, [this](const LineSplitter::Line& line) { handleLine(line); }),
      m_queue(queue), m_self(std::make_shared<TerminalFrontEnd*>(this)) {
    m_view.onChange([this] { draw(); });
    draw();
}

void TerminalFrontEnd::draw() {
    m_screen.show(m_view.entries());
    drawAgainInForeground();
}

/// A shell does not tell a running job that it has been given the terminal.
void TerminalFrontEnd::drawAgainInForeground() {
    if (m_awaitsForeground || isInForeground(m_output)) {
        return;
    }
    m_awaitsForeground = true;
    m_queue.after(kForegroundCheckInterval, [weak = std::weak_ptr(m_self)] {
        if (const auto self = weak.lock()) {
            (*self)->m_awaitsForeground = false;
            (*self)->draw();
        }
    });
}

void TerminalFrontEnd::handleLine(const LineSplitter::Line& line) {
    if (isEchoed(m_input, m_output)) {
        m_screen.handleEchoedLine(QString::fromUtf8(line.value_or(QByteArray())));
    }
    const std::vector<MenuEntry> entries = m_view.entries();
    const auto command = line ? commandFor(entries, *line) : std::nullopt;
    if (command) {
        m_view.activate(*command);
    } else {
        m_screen.printLine(commandHelp(entries));
    }
}

} // namespace orvanta
