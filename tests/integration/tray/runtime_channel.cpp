// SPDX-License-Identifier: MIT
#include "integration/tray/runtime_channel.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStringList>

namespace orvanta::tests {

namespace {

const QString kStagedNode = QStringLiteral(ORVANTA_STAGED_RESOURCES "/node-runtime/node");
const QString kManifest = QStringLiteral("out/beta/" ORVANTA_TARGET "/manifest.json");

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        file.write(bytes);
    }
}

bool succeeds(const QString& program, const QStringList& arguments) {
    return QProcess::execute(program, arguments) == 0;
}

} // namespace

RuntimeChannel::RuntimeChannel() {
    QDir().mkpath(path(QStringLiteral("out")));
    const QString node = path(QStringLiteral("node"));
    writeFile(node, "#!/bin/sh\nexec '" + kStagedNode.toUtf8() + "' \"$@\"\n");
    QFile::setPermissions(node, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_server.start(kStagedNode,
                   {QStringLiteral(ORVANTA_CHANNEL_SERVER), path(QStringLiteral("out"))});
    if (m_server.waitForReadyRead(10'000)) {
        m_baseUrl = QString::fromLatin1(m_server.readLine().trimmed());
    }
}

RuntimeChannel::~RuntimeChannel() {
    m_server.kill();
    m_server.waitForFinished();
}

QString RuntimeChannel::makeRuntime(const QString& name, const QString& version,
                                    const QStringList& options) const {
    QDir().mkpath(path(name));
    const QStringList command{QStringLiteral("NODE=") + path(QStringLiteral("node")),
                              QStringLiteral(ORVANTA_MAKE_RUNTIME), version, path(name)};
    return succeeds(QStringLiteral("env"), command + options) ? path(name) : QString();
}

bool RuntimeChannel::publish(const QString& version, const QStringList& options,
                             const QString& minimum) {
    const QString runtime = makeRuntime(QStringLiteral("runtime-") + version, version, options);
    return !runtime.isEmpty() &&
           succeeds(QStringLiteral("env"), {QStringLiteral("BASE_URL=") + m_baseUrl,
                                            QStringLiteral("MIN_RUNTIME_VERSION=") + minimum,
                                            QStringLiteral(ORVANTA_PUBLISH_SCRIPT), runtime,
                                            version, path(QStringLiteral("out"))});
}

QByteArray RuntimeChannel::archiveOf(const QString& folder, const QString& format) const {
    const QStringList options{QStringLiteral("-c"),
                              QStringLiteral("--format"),
                              format,
                              QStringLiteral("-f"),
                              path(QStringLiteral("archive")),
                              QStringLiteral("-C"),
                              folder};
    const QStringList entries =
        QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    QFile archive(path(QStringLiteral("archive")));
    return succeeds(QStringLiteral("bsdtar"), options + entries) &&
                   archive.open(QIODevice::ReadOnly)
               ? archive.readAll()
               : QByteArray();
}

void RuntimeChannel::offer(const QString& version, const QByteArray& archive) const {
    const QString target = QStringLiteral(ORVANTA_TARGET);
    const QString name = QStringLiteral("/beta/%1/runtime-%2.zip").arg(target, version);
    writeFile(path(QStringLiteral("out")) + name, archive);
    const QByteArray digest = QCryptographicHash::hash(archive, QCryptographicHash::Sha256);
    writeManifest({{QStringLiteral("version"), version},
                   {QStringLiteral("platform"), target.section(u'/', 0, 0)},
                   {QStringLiteral("arch"), target.section(u'/', 1)},
                   {QStringLiteral("archiveUrl"), m_baseUrl + name},
                   {QStringLiteral("sha256"), QString::fromLatin1(digest.toHex())}});
}

void RuntimeChannel::setInManifest(const QString& name, const QString& value) const {
    QJsonObject changed = manifest();
    changed.insert(name, value);
    writeManifest(changed);
}

void RuntimeChannel::disturbArchive(const QString& how) const {
    QString address = manifest().value(QStringLiteral("archiveUrl")).toString();
    setInManifest(QStringLiteral("archiveUrl"), address.insert(m_baseUrl.size(), u'/' + how));
}

qint64 RuntimeChannel::archiveSize() const {
    const QString address = manifest().value(QStringLiteral("archiveUrl")).toString();
    const QFileInfo archive(QFileInfo(path(kManifest)).path() + u'/' + address.section(u'/', -1));
    return archive.size();
}

QJsonObject RuntimeChannel::manifest() const {
    QFile file(path(kManifest));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                          : QJsonObject();
}

void RuntimeChannel::writeManifest(const QJsonObject& manifest) const {
    writeFile(path(kManifest), QJsonDocument(manifest).toJson());
}

} // namespace orvanta::tests
