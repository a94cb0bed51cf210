// SPDX-License-Identifier: MIT
#pragma once

#include "soak/user.h"

namespace orvanta::soak {

/// Runs a tray for `user` as the program's arguments say and gives a verdict; the exit status.
int soakFor(User& user);

} // namespace orvanta::soak
