// SPDX-License-Identifier: MIT
#pragma once

#include "app/command_reader.h"
#include "app/terminal_commands.h"

#include <memory>

namespace orvanta {

class MainQueue;
class OrvantaMenuBarView;
class TerminalScreen;

/// The menu in a terminal: draws the entries on every change and runs the ones whose number or
/// text is typed. The end of the input only ends the typing.
class TerminalFrontEnd {
public:
    /// Descriptors: where commands come from and where the screen writes. Everything given
    /// outlives this object. Draws the menu at once.
    TerminalFrontEnd(OrvantaMenuBarView& view, TerminalScreen& screen, MainQueue& queue, int input,
                     int output);
    TerminalFrontEnd(const TerminalFrontEnd&) = delete;
    TerminalFrontEnd& operator=(const TerminalFrontEnd&) = delete;

private:
    void draw();
    void drawAgainInForeground();
    void handleLine(const LineSplitter::Line& line);

    OrvantaMenuBarView& m_view;
    TerminalScreen& m_screen;
    int m_input;
    int m_output;
    CommandReader m_reader;
    MainQueue& m_queue;
    bool m_awaitsForeground = false;           ///< a look at who owns the terminal is due
    std::shared_ptr<TerminalFrontEnd*> m_self; ///< what waits in the queue holds it weakly
};

} // namespace orvanta
