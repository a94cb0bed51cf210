// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"
#include "platform/login_item.h"

#include <QString>

namespace orvanta {

/// An entry in the user's autostart directory, which desktops run at login.
class LinuxLoginItem : public LoginItem {
public:
    /// `program` is the absolute path of what is started at login. `environment` names the
    /// directory and outlives this object.
    LinuxLoginItem(const Environment& environment, const QString& program);

    bool isEnabled() const override;
    void registerItem() override;
    void unregisterItem() override;

private:
    QString directory() const;
    QString path() const;

    const Environment& m_environment;
    QString m_program;
};

} // namespace orvanta
