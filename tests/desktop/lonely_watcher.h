// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>

namespace orvanta::tests {

/// A watcher of status icons before any panel has come, for as long as this object lives.
class LonelyWatcher : public QDBusVirtualObject {
public:
    explicit LonelyWatcher(const QString& busAddress);
    ~LonelyWatcher() override;
    LonelyWatcher(const LonelyWatcher&) = delete;
    LonelyWatcher& operator=(const LonelyWatcher&) = delete;

    /// Whether there was no other one.
    bool isTheWatcher() const { return m_isTheWatcher; }
    /// How many icons were announced to it.
    int items() const { return m_items; }
    /// How often it was asked whether there is a panel.
    int questions() const { return m_questions; }

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override;

private:
    QDBusConnection m_bus;
    bool m_isTheWatcher = false;
    int m_items = 0;
    int m_questions = 0;
};

} // namespace orvanta::tests
