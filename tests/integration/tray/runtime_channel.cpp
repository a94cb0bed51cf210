// SPDX-License-Identifier: MIT
#include "integration/tray/runtime_channel.h"

#include <QDir>
#include <QFile>
#include <QStringList>

namespace orvanta::tests {

namespace {

const QString kStagedNode = QStringLiteral(ORVANTA_STAGED_RESOURCES "/node-runtime/node");

/// Serves the folder named by its argument and prints its port.
const QString kStaticServer = QStringLiteral(R"(
const http = require('http'), fs = require('fs'), path = require('path');
const root = process.argv[1];
http.createServer((request, reply) => {
  const file = path.join(root, decodeURIComponent(request.url));
  fs.readFile(file, (error, bytes) => {
    reply.writeHead(error ? 404 : 200);
    reply.end(error ? 'not here' : bytes);
  });
}).listen(0, '127.0.0.1', function () { console.log(this.address().port); });
)");

void writeFile(const QString& path, const QByteArray& bytes) {
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
    QDir().mkpath(m_folder.filePath(QStringLiteral("out")));
    m_server.start(kStagedNode,
                   {QStringLiteral("-e"), kStaticServer, m_folder.filePath(QStringLiteral("out"))});
    if (m_server.waitForReadyRead(10'000)) {
        m_baseUrl = QStringLiteral("http://127.0.0.1:%1")
                        .arg(QString::fromLatin1(m_server.readLine().trimmed()));
    }
}

RuntimeChannel::~RuntimeChannel() {
    m_server.kill();
    m_server.waitForFinished();
}

/// Its node only calls the staged one, so that archives stay small.
QString RuntimeChannel::makeRuntime(const QString& version, const QByteArray& serverScript) const {
    const QString runtime = m_folder.filePath(QStringLiteral("runtime-") + version);
    QDir().mkpath(runtime + QStringLiteral("/node-runtime"));
    const QString localServer = runtime + QStringLiteral("/local-server");
    succeeds(QStringLiteral("cp"),
             {QStringLiteral("-r"), QStringLiteral(ORVANTA_STAGED_RESOURCES "/local-server"),
              localServer});
    if (!serverScript.isEmpty()) {
        writeFile(localServer + QStringLiteral("/server.js"), serverScript);
    }
    const QString node = runtime + QStringLiteral("/node-runtime/node");
    writeFile(node, "#!/bin/sh\nexec '" + kStagedNode.toUtf8() + "' \"$@\"\n");
    QFile::setPermissions(node, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return runtime;
}

bool RuntimeChannel::publish(const QString& version, const QByteArray& serverScript,
                             const QString& minimum) {
    const QStringList settings{QStringLiteral("BASE_URL=") + m_baseUrl,
                               QStringLiteral("MIN_RUNTIME_VERSION=") + minimum};
    return succeeds(QStringLiteral("env"),
                    settings + QStringList{QStringLiteral(ORVANTA_PUBLISH_SCRIPT),
                                           makeRuntime(version, serverScript), version,
                                           m_folder.filePath(QStringLiteral("out"))});
}

void RuntimeChannel::editManifest(const QByteArray& from, const QByteArray& to) const {
    const QString path =
        m_folder.filePath(QStringLiteral("out/beta/" ORVANTA_TARGET "/manifest.json"));
    QFile file(path);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly)) {
        bytes = file.readAll();
        file.close();
    }
    writeFile(path, bytes.replace(from, to));
}

} // namespace orvanta::tests
