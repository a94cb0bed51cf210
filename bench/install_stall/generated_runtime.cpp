// SPDX-License-Identifier: MIT
#include "bench/install_stall/generated_runtime.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cstdio>
#include <vector>

namespace orvanta::bench {

namespace {

constexpr int kFiles = 5'000;
constexpr qsizetype kBytes = 200'000'000;
constexpr qsizetype kNodeBytes = kBytes / 2;
constexpr qsizetype kFileBytes = (kBytes - kNodeBytes) / (kFiles - 1);
constexpr int kFilesPerFolder = 50;

const QStringList kRequired{QStringLiteral("server.js"), QStringLiteral("config.installer.json"),
                            QStringLiteral("cloudflared"),
                            QStringLiteral("views/project-list.html"),
                            QStringLiteral("public/index3.html")};

bool writeNoise(const QString& path, qsizetype bytes, QRandomGenerator& random) {
    std::vector<quint64> noise((static_cast<std::size_t>(bytes) + 7) / 8);
    random.fillRange(noise.data(), static_cast<qsizetype>(noise.size()));
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) &&
           file.write(reinterpret_cast<const char*>(noise.data()), bytes) == bytes;
}

QString fileName(int index) {
    if (index < kRequired.size()) {
        return kRequired[index];
    }
    return QStringLiteral("modules/%1/%2.js").arg(index / kFilesPerFolder).arg(index);
}

bool writeRuntime(const QString& path) {
    QRandomGenerator random(1);
    const QString node = path + QStringLiteral("/node-runtime/node");
    bool isWritten =
        writeNoise(node, kNodeBytes, random) &&
        QFile::setPermissions(node, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    for (int index = 0; isWritten && index < kFiles - 1; ++index) {
        isWritten = writeNoise(path + QStringLiteral("/local-server/") + fileName(index),
                               kFileBytes, random);
    }
    return isWritten;
}

} // namespace

bool GeneratedRuntime::make(const QString& folder) {
    m_path = folder + QStringLiteral("/runtime");
    const QString out = folder + QStringLiteral("/out");
    if (!writeRuntime(m_path) || !serve(out)) {
        std::fputs("The runtime could not be generated and served.\n", stderr);
        return false;
    }
    return QProcess::execute(QStringLiteral("env"), {QStringLiteral("BASE_URL=") + m_baseUrl,
                                                     QStringLiteral(ORVANTA_PUBLISH_SCRIPT), m_path,
                                                     QStringLiteral("2.0.0"), out}) == 0;
}

bool GeneratedRuntime::serve(const QString& folder) {
    m_server.start(QStringLiteral(ORVANTA_NODE),
                   {QStringLiteral(ORVANTA_SERVE), folder, QStringLiteral("0")});
    if (m_server.waitForReadyRead(10'000)) {
        m_baseUrl = QString::fromLatin1(m_server.readLine().trimmed());
    }
    return !m_baseUrl.isEmpty();
}

GeneratedRuntime::~GeneratedRuntime() {
    m_server.kill();
    m_server.waitForFinished();
}

} // namespace orvanta::bench
