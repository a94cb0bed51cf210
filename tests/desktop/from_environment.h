// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <QtGlobal>

namespace orvanta::tests {

/// The number in the variable `name`, for longer runs than those of every day; the test fails when
/// that is no positive number.
inline int fromEnvironment(const char* name, int otherwise) {
    if (!qEnvironmentVariableIsSet(name)) {
        return otherwise;
    }
    const int number = qEnvironmentVariableIntValue(name);
    EXPECT_GT(number, 0) << name << " must be a positive number";
    return number;
}

} // namespace orvanta::tests
