// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

namespace orvanta {

/// The user's default web browser.
class Browser {
public:
    virtual ~Browser() = default;

    /// Asks the desktop to open `url` and returns at once. Failure is not reported.
    virtual void open(const QUrl& url) = 0;
};

} // namespace orvanta
