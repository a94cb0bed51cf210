// SPDX-License-Identifier: MIT
#pragma once

#include "soak/user.h"

#include <QHash>

namespace orvanta::soak {

/// Types, and reads what is printed.
class TerminalUser : public User {
public:
    QProcessEnvironment prepare(const QString& home,
                                const QProcessEnvironment& environment) override;
    QStringList arguments() const override { return {QStringLiteral("--terminal")}; }
    void watch(QProcess& tray) override { m_tray = &tray; }
    void look() override;
    QString said(const QString& heading) const override { return m_said.value(heading); }
    bool canChoose(const QString& entry) const override { return m_canChoose.value(entry); }
    void choose(const QString& entry) override;
    void disturb() override;
    QString scene() const override;

private:
    void type(const QString& text);
    void take(const QString& line);

    QProcess* m_tray = nullptr;
    QByteArray m_unfinished;
    QHash<QString, QString> m_said;
    QHash<QString, bool> m_canChoose;
    QStringList m_lastLines;
};

} // namespace orvanta::soak
