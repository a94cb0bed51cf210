// SPDX-License-Identifier: MIT
// Parsed once instead of in every source: what most of them include anyway.
#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>
