// SPDX-License-Identifier: MIT
#pragma once

#include "platform/browser.h"

#include <QString>

#include <functional>

namespace orvanta {

/// Opens addresses by way of the workspace. Main thread only.
class MacBrowser : public Browser {
public:
    /// `complain`, which may be empty, is given a line for the user, with the address, when the
    /// workspace refuses.
    explicit MacBrowser(std::function<void(const QString&)> complain)
        : m_complain(std::move(complain)) {}

    void open(const QUrl& url) override;

private:
    const std::function<void(const QString&)> m_complain;
};

} // namespace orvanta
