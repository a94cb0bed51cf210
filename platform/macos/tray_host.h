// SPDX-License-Identifier: MIT
#pragma once

#include "platform/tray_host.h"

#include <QObject>

namespace orvanta {

/// The menu bar, which is always there. Needs a QCoreApplication.
class MenuBarHost : public TrayHost {
public:
    void watch(std::function<void(Event)> observer) override;
    QString hint() const override;
    QString menuText(const QString& text) const override;
    bool opensMenuOnClick() const override { return true; }

private:
    QObject m_context; ///< what is posted to it is dropped with this object
};

} // namespace orvanta
