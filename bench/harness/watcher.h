// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>

/// The bus object of a panel. The names are those of the protocol.
class Watcher : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)

public:
    bool hasHost() const { return true; }
    int protocolVersion() const { return 0; }
    QStringList items() const { return {}; }

    /// Chooses the entry of that name in the menu of the latest icon, if there is one.
    void choose(const QString& name);

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service);

Q_SIGNALS:
    void StatusNotifierItemRegistered(const QString& service);
    void StatusNotifierHostRegistered();

private Q_SLOTS:
    void handleNews(const QDBusMessage& news);

private:
    void ask(const QString& owner, const QString& path, qint64 time);

    QString m_owner;
    QString m_path;
};
