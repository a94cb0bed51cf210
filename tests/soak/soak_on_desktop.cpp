// SPDX-License-Identifier: MIT
// Keeps a real tray with its icon on a panel busy and says whether it grew.
#include "soak/command_line.h"
#include "soak/desktop_user.h"

#include <QCoreApplication>

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    orvanta::soak::DesktopUser user;
    return orvanta::soak::soakFor(user);
}
