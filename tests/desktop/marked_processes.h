// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <sys/types.h>

#include <vector>

namespace orvanta::tests {

/// From now on, processes whose parent dies become children of this one instead of vanishing from
/// sight.
void adoptOrphans();

/// The living processes besides this one that were started with `variable` ("NAME=value") in their
/// environment, whoever started them.
std::vector<pid_t> processesWith(const QByteArray& variable);

/// Kills them until there are none; false when there still are after ten seconds. Those that are
/// children of this process are reaped, so no QProcess may wait for any of them.
bool endProcessesWith(const QByteArray& variable);

} // namespace orvanta::tests
