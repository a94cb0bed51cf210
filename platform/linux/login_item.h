// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"
#include "platform/login_item.h"

#include <QString>
#include <QStringList>

namespace orvanta {

/// An entry in the user's autostart directory, which desktops run at login.
class LinuxLoginItem : public LoginItem {
public:
    /// `program` is the absolute path of what is started at login. `environment` names the
    /// directories and the desktop, and outlives this object.
    LinuxLoginItem(const Environment& environment, const QString& program);

    /// What counts is the entry that desktops look at, the user's or else the system's, and whether
    /// it starts `program`, not another copy that was installed elsewhere.
    bool isEnabled() const override;

    /// Replaces whatever entry or link the user has.
    void registerItem() override;

    /// Removes the user's entry; one of the system's is covered by an entry that is switched off.
    void unregisterItem() override;

private:
    QString userEntry() const;
    QStringList systemEntries() const;
    bool startsTheProgram(const QString& entry) const;

    const Environment& m_environment;
    const QString m_program;
};

} // namespace orvanta
