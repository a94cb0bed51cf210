// SPDX-License-Identifier: MIT
// Keeps a real tray in a terminal busy and says whether it grew.
#include "soak/command_line.h"
#include "soak/terminal_user.h"

#include <QCoreApplication>

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    orvanta::soak::TerminalUser user;
    return orvanta::soak::soakFor(user);
}
