// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace orvanta::tests {

/// A release channel as an operator would have it: runtimes published by the project's own script
/// into a folder that a static web server offers on this machine.
class RuntimeChannel {
public:
    RuntimeChannel();
    ~RuntimeChannel();
    RuntimeChannel(const RuntimeChannel&) = delete;
    RuntimeChannel& operator=(const RuntimeChannel&) = delete;

    /// The address below which the manifests are; empty when the server did not start.
    const QString& baseUrl() const { return m_baseUrl; }

    /// Publishes the demo connector as `version`. `serverScript`, when given, is its server.js;
    /// `minimum` makes it mandatory for older runtimes. False when the script failed.
    bool publish(const QString& version, const QByteArray& serverScript = {},
                 const QString& minimum = {});

    /// Replaces `from` by `to` in the published manifest.
    void editManifest(const QByteArray& from, const QByteArray& to) const;

private:
    QString makeRuntime(const QString& version, const QByteArray& serverScript) const;

    QTemporaryDir m_folder;
    QProcess m_server;
    QString m_baseUrl;
};

} // namespace orvanta::tests
