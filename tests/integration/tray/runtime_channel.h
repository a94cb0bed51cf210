// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
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

    /// Publishes the demo connector as `version`. `options` are those of make-runtime.sh; `minimum`
    /// makes it mandatory for older runtimes. False when a script failed.
    bool publish(const QString& version, const QStringList& options = {},
                 const QString& minimum = {});

    /// Offers `archive`, whatever it is, as `version`, with the digest that it has.
    void offer(const QString& version, const QByteArray& archive) const;

    /// Makes the demo connector a runtime in the folder `name` of this channel and gives its path.
    /// Its node only calls the staged one, so that archives stay small. Empty on failure.
    QString makeRuntime(const QString& name, const QString& version,
                        const QStringList& options = {}) const;

    /// What is in `folder`, packed by the system's tool; `format` as that calls it. Empty on
    /// failure.
    QByteArray archiveOf(const QString& folder,
                         const QString& format = QStringLiteral("zip")) const;

    /// Sets a member of the published manifest.
    void setInManifest(const QString& name, const QString& value) const;

    /// Lets the archive be fetched through a network that is "moved" (one redirect), "cut" (the
    /// connection ends halfway) or "slow" (2 s); any other word is a folder that is not there.
    void disturbArchive(const QString& how) const;

    QJsonObject manifest() const;
    /// The size of the published archive, in bytes.
    qint64 archiveSize() const;
    QString path(const QString& name) const { return m_folder.filePath(name); }

private:
    void writeManifest(const QJsonObject& manifest) const;

    QTemporaryDir m_folder;
    QProcess m_server;
    QString m_baseUrl;
};

} // namespace orvanta::tests
