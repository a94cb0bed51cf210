// SPDX-License-Identifier: MIT
#pragma once

#include "orvanta_pch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
