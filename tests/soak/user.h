// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace orvanta::soak {

/// Somebody who sees the tray's menu and chooses from it, in whatever form the tray shows it.
/// Entries go by their texts.
class User {
public:
    User() = default;
    virtual ~User() = default;
    User(const User&) = delete;
    User& operator=(const User&) = delete;

    /// Makes all ready that the tray needs beside it, below `home`; the environment to start it in.
    virtual QProcessEnvironment prepare(const QString& home,
                                        const QProcessEnvironment& environment) = 0;
    /// What the tray is started with.
    virtual QStringList arguments() const = 0;
    /// The tray, which has been started and outlives this object or has ended before.
    virtual void watch(QProcess& tray) = 0;

    /// Takes in what is to be seen now.
    virtual void look() = 0;
    /// The rest of the entry that begins with `heading`, such as "Status: ".
    virtual QString said(const QString& heading) const = 0;
    virtual bool canChoose(const QString& entry) const = 0;
    /// From now on, what the runtime's line says is news.
    virtual void choose(const QString& entry) = 0;
    /// Lets happen what can happen to such a menu, besides its use.
    virtual void disturb() = 0;
    /// All there is to say when a wait was in vain.
    virtual QString scene() const = 0;
};

} // namespace orvanta::soak
